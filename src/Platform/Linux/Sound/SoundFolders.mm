#include "Platform/Linux/Sound/SoundFolders.h"

#import <Foundation/Foundation.h>

namespace tessaro::platform {

std::string BundleResourceFolder() {
  @autoreleasepool {
    NSString* path = [[NSBundle mainBundle] resourcePath];
    return path != nil ? [path fileSystemRepresentation] : "";
  }
}

std::vector<std::string> GNUstepSoundFolders() {
  @autoreleasepool {
    std::vector<std::string> folders;
    for (NSString* library in NSSearchPathForDirectoriesInDomains(NSLibraryDirectory, NSAllDomainsMask, YES)) {
      folders.emplace_back([[library stringByAppendingPathComponent:@"Sounds"] fileSystemRepresentation]);
    }
    return folders;
  }
}

}  // namespace tessaro::platform
