#pragma once

#include <Foundation/Foundation.h>

API_AVAILABLE(macos(11.0))
@interface UTType : NSObject <NSCopying>
+ (UTType*)typeWithIdentifier:(NSString*)identifier;
+ (UTType*)typeWithFilenameExtension:(NSString*)extension;
@property(readonly) NSString* identifier;
@end
