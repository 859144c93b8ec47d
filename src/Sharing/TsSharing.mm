#include "Sharing/TsSharing.h"

#import <Foundation/Foundation.h>

#include <utility>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Sharing.h"

namespace platform = tessaro::platform;

namespace {

std::vector<std::string> ExistingFiles(NSArray* paths) {
  std::vector<std::string> existing;
  for (id each in paths) {
    NSString* path = As<NSString>(each);
    if (path != nil && [[NSFileManager defaultManager] fileExistsAtPath:path]) {
      existing.push_back(TsStdString(path));
    } else {
      TsLogWarning(@"There is no file %@ to share", each);
    }
  }
  return existing;
}

double Number(NSDictionary* place, NSString* key) { return [As<NSNumber>([place objectForKey:key]) doubleValue]; }

}  // namespace

void TsShareFiles(NSWindow* window, NSArray* paths, NSDictionary* place) {
  std::vector<std::string> existing = ExistingFiles(paths);
  if (existing.empty()) return TsLogError(@"There are no files to share");
  platform::ShowSharingPicker(window,
                              {.x = Number(place, @"x"),
                               .y = Number(place, @"y"),
                               .width = Number(place, @"width"),
                               .height = Number(place, @"height")},
                              std::move(existing));
}
