#pragma once

#include <AppKit/AppKitDefines.h>

using NSSoundName = NSString*;
@class NSSound;
@protocol NSSoundDelegate <NSObject>
@optional
- (void)sound:(NSSound*)sound didFinishPlaying:(BOOL)finished;
@end
@interface NSSound : NSObject
- (instancetype)initWithContentsOfFile:(NSString*)path byReference:(BOOL)byReference;
- (instancetype)initWithContentsOfURL:(NSURL*)url byReference:(BOOL)byReference;
@property(class, readonly, copy) NSArray* soundUnfilteredTypes;
@property(assign) id<NSSoundDelegate> delegate;
@property(readonly, getter=isPlaying) BOOL playing;
- (BOOL)play;
- (BOOL)stop;
@end
