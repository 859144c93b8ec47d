#include <uv.h>

#include "Platform/Cocoa.h"
#include "Platform/Linux/AppKit/NSMenuItem+Completion.h"
#include "Probe.h"
#import "StatusItem/TsStatusItemController.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"

namespace {

// Nanoseconds that the steps of building the item's menu take: asking script, reading its JSON, making the menu.
id timeRebuild() {
  const tessaro::platform::WithoutUserShortcuts asForTheTray;
  TsStatusItemController* controller = [TsStatusItemController sharedInstance];
  const std::uint64_t start = uv_hrtime();
  NSString* json = TsCallback(TsSlot::StatusItemMenuNeedsUpdate).CallForString({@"status-item", true});
  const std::uint64_t asked = uv_hrtime();
  NSDictionary* contents = TsConvertFromJSONString(json, nullptr);
  const std::uint64_t read = uv_hrtime();
  const TsStatusMenuSource script = [controller menuNeedsUpdateCallback];
  [controller setMenuNeedsUpdateCallback:[contents](NSString*, bool) { return contents; }];
  [controller menuNeedsUpdate:[[controller statusItem] menu] type:@"status-item" includeMessage:YES];
  const std::uint64_t built = uv_hrtime();
  [controller setMenuNeedsUpdateCallback:script];
  return @[ @(double(asked - start)), @(double(read - asked)), @(double(built - read)) ];
}

id state() {
  NSStatusItem* item = [[TsStatusItemController sharedInstance] statusItem];
  return @{@"isShown" : Truth(item != nil), @"title" : OrNull([item title])};
}

double titleWidth(NSString* title) {
  return [title sizeWithAttributes:@{NSFontAttributeName : [NSFont menuBarFontOfSize:0]}].width;
}

}  // namespace

void AttachStatusItemProbe(v8::Local<v8::Object> exports) {
  PROBE(timeRebuild);
  PROBE(state);
  PROBE(titleWidth);
}
