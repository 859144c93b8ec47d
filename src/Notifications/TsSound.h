#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

// A sound that the system knows by its name.
@interface TsSound : NSObject {
 @private
  Ref<NSString> name_;
}

@property(nonatomic, readonly) NSString* name;  // no folder, no extension

// Every playable sound, in the order of their names. Learnt once.
+ (NSArray*)sounds;

// The host application's own.
+ (TsSound*)soundNewMail;

// nil when the system has no such sound.
+ (TsSound*)soundNamed:(NSString*)name;

// nil for nil.
+ (TsSound*)soundWithPath:(NSString*)path;

// Of a path, the last component counts.
- (instancetype)initWithName:(NSString*)name;

- (BOOL)isEqualToSound:(TsSound*)sound;

- (BOOL)isPlayable;

// Cuts off the sound that is playing, if there is one.
- (void)play;

@end
