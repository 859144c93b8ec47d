#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

// A sound of the system's, by its name.
@interface TsSound : NSObject {
 @private
  Ref<NSString> _name;
}

@property(nonatomic, readonly) NSString* name;  // no folder, no extension

// Every playable sound, sorted by name; listed once in a process.
+ (NSArray*)sounds;

// The host application's new-mail sound.
+ (TsSound*)soundNewMail;

// nil when the system has no such sound.
+ (TsSound*)soundNamed:(NSString*)name;

// nil for nil.
+ (TsSound*)soundWithPath:(NSString*)path;

// Takes the last component of a path.
- (instancetype)initWithName:(NSString*)name;

- (BOOL)isEqualToSound:(TsSound*)sound;

- (BOOL)isPlayable;

// Cuts off the sound that is playing.
- (void)play;

@end
