#pragma once

#include <Foundation/Foundation.h>

using QLThumbnailGenerationRequestRepresentationTypes = NSUInteger;
enum : QLThumbnailGenerationRequestRepresentationTypes {
  QLThumbnailGenerationRequestRepresentationTypeIcon = 1 << 0,
  QLThumbnailGenerationRequestRepresentationTypeLowQualityThumbnail = 1 << 1,
  QLThumbnailGenerationRequestRepresentationTypeThumbnail = 1 << 2,
};
API_AVAILABLE(macos(10.15))
@interface QLThumbnailGenerationRequest : NSObject
- (instancetype)initWithFileAtURL:(NSURL*)url
                             size:(CGSize)size
                            scale:(CGFloat)scale
              representationTypes:(QLThumbnailGenerationRequestRepresentationTypes)types;
@end
API_AVAILABLE(macos(10.15))
@interface QLThumbnailRepresentation : NSObject
@property(readonly) CGImageRef CGImage;
@end
API_AVAILABLE(macos(10.15))
@interface QLThumbnailGenerator : NSObject
@property(class, readonly) QLThumbnailGenerator* sharedGenerator;
- (void)generateBestRepresentationForRequest:(QLThumbnailGenerationRequest*)request
                           completionHandler:(void (^)(QLThumbnailRepresentation* preview, NSError* error))handler;
- (void)cancelRequest:(QLThumbnailGenerationRequest*)request;
@end
