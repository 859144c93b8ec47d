#pragma once

#include <Foundation/NSObject.h>

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
+ (instancetype)bundleWithPath:(NSString*)path;
+ (instancetype)bundleWithURL:(NSURL*)url;
+ (NSBundle*)bundleForClass:(Class)cls;
- (BOOL)load;
@property(readonly, copy) NSString* bundleIdentifier;
@property(readonly, copy) NSString* bundlePath;
@property(readonly, copy) NSURL* bundleURL;
@property(readonly, copy) NSString* executablePath;
@property(readonly, copy) NSString* resourcePath;
@property(readonly, copy) NSDictionary* infoDictionary;
- (id)objectForInfoDictionaryKey:(NSString*)key;
- (NSString*)pathForResource:(NSString*)name ofType:(NSString*)extension;
- (NSString*)localizedStringForKey:(NSString*)key value:(NSString*)value table:(NSString*)table;
@end

#define NSLocalizedString(key, comment) [NSBundle.mainBundle localizedStringForKey:(key) value:@"" table:nil]
