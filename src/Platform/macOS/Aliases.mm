#include "Platform/Files.h"

#include "Base/TsString.h"
#include "Platform/macOS/Guarded.h"

// Bookmark files, which the Finder calls aliases, and symbolic links. Any thread; no volume is mounted, and no window
// shown, to resolve one.
namespace tessaro::platform {

namespace {

NSURL* FileURL(const std::filesystem::path& path) { return [NSURL fileURLWithPath:TsNSString(path.native())]; }

std::string PathOf(NSURL* url) { return url != nil ? TsStdString([url path]) : std::string(); }

bool IsAlias(NSURL* url) {
  NSNumber* isAlias = nil;
  return [url getResourceValue:&isAlias forKey:NSURLIsAliasFileKey error:nullptr] && [isAlias boolValue];
}

}  // namespace

std::filesystem::path ResolveAlias(const std::filesystem::path& alias) noexcept {
  std::string target;
  const std::string failure = Guarded([&] {
    NSURL* url = FileURL(alias);
    if (!IsAlias(url)) return;
    const NSURLBookmarkResolutionOptions silently =
        NSURLBookmarkResolutionWithoutUI | NSURLBookmarkResolutionWithoutMounting;
    target = PathOf([NSURL URLByResolvingAliasFileAtURL:url options:silently error:nullptr]);
  });
  std::error_code error;
  return failure.empty() && std::filesystem::exists(target, error) ? target : std::string();
}

Result<void> WriteAlias(const std::filesystem::path& alias, const std::filesystem::path& target) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    NSError* error = nil;
    NSData* bookmark = [FileURL(target) bookmarkDataWithOptions:NSURLBookmarkCreationSuitableForBookmarkFile
                                 includingResourceValuesForKeys:nil
                                                  relativeToURL:nil
                                                          error:&error];
    const NSURLBookmarkCreationOptions options = NSURLBookmarkCreationSuitableForBookmarkFile;
    if (bookmark != nil && [NSURL writeBookmarkData:bookmark toURL:FileURL(alias) options:options error:&error]) return;
    reason = ReasonOf(error);
  });
  if (!failure.empty()) return Fail(failure);
  if (!reason.empty()) return Fail(reason);
  return {};
}

}  // namespace tessaro::platform
