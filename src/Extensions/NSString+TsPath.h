#pragma once

#import <Foundation/NSString.h>

@interface NSString (TsPath)

// By the path's extension.
- (BOOL)ts_isZipPath;

// Whether the file begins like an image that every web view shows: PNG, JPEG, GIF, WebP or AVIF. The name does not
// matter.
- (BOOL)ts_isWebImagePath;

// The path or, where something exists there, a path beside it with a number.
- (NSString*)ts_makeUniquePath;

// As a part of a URL's query: everything but letters, digits and "-._~" is escaped.
- (NSString*)ts_escapeForURL;

@end
