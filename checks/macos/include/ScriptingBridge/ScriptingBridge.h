#pragma once

#include <Foundation/Foundation.h>

@interface SBObject : NSObject
- (id)get;
@end
@interface SBElementArray : NSMutableArray
@end
@protocol SBApplicationDelegate <NSObject>
- (id)eventDidFail:(const void*)event withError:(NSError*)error;
@end
@interface SBApplication : SBObject
+ (__kindof SBApplication*)applicationWithBundleIdentifier:(NSString*)identifier;
+ (__kindof SBApplication*)applicationWithURL:(NSURL*)url;
- (Class)classForScriptingClass:(NSString*)name;
@property(readonly, getter=isRunning) BOOL running;
- (void)activate;
@property(retain) id<SBApplicationDelegate> delegate;
@property long timeout;
@end
