#include <uv.h>

#include "Dock/TsDockMenu.h"
#import "Extensions/NSColor+TsHex.h"
#import "Extensions/NSImage+TsTint.h"
#import "Extensions/NSString+TsFormat.h"
#include "Platform/Cocoa.h"
#include "Platform/Linux/AppKit/NSMenuItem+Completion.h"
#include "Probe.h"
#include "StatusItem/AccountBadge.h"
#import "StatusItem/TsAccountStatusMenuItem.h"
#import "StatusItem/TsStatusItemController.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"

namespace {

Ref<NSBitmapImageRep> Pixels(NSImage* image) {
  const NSSize size = [image size];
  auto canvas = Adopt([[NSImage alloc] initWithSize:size]);
  [canvas lockFocus];
  [image drawAtPoint:NSZeroPoint fromRect:NSZeroRect operation:NSCompositeSourceOver fraction:1];
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithFocusedViewRect:NSMakeRect(0, 0, size.width, size.height)]);
  [canvas unlockFocus];
  return pixels;
}

// Hexadecimal, or "clear" (whose components are none).
NSString* ColorText(NSColor* color) {
  if ([color alphaComponent] == 0) return @"clear";
  const auto byte = [](CGFloat component) { return static_cast<int>(component * 255 + 0.5); };
  return [NSString stringWithFormat:@"%02X%02X%02X", byte([color redComponent]), byte([color greenComponent]),
                                    byte([color blueComponent])];
}

NSDictionary* DescribeImage(NSImage* image) {
  if (image == nil) return nil;
  const auto pixels = Pixels(image);
  NSMutableDictionary* counts = [NSMutableDictionary dictionary];
  for (NSInteger y = 0; y < [pixels pixelsHigh]; ++y) {
    for (NSInteger x = 0; x < [pixels pixelsWide]; ++x) {
      NSString* color = ColorText([pixels colorAtX:x y:y]);
      [counts setObject:@([[counts objectForKey:color] intValue] + 1) forKey:color];
    }
  }
  return @{
    @"width" : @([image size].width),
    @"height" : @([image size].height),
    @"isTemplate" : Truth([image isTemplate]),
    @"colors" : counts,
  };
}

NSDictionary* DescribeItem(NSMenuItem* item) {
  if ([item isSeparatorItem]) return @{@"separator" : Truth(true)};
  NSMutableDictionary* description = [NSMutableDictionary dictionaryWithDictionary:@{
    @"class" : NSStringFromClass([item class]),
    @"title" : [item title],
    @"action" : NSStringFromSelector([item action]),
    @"key" : [item keyEquivalent],
    @"isOn" : Truth([item state] == NSOnState),
    @"isEnabled" : Truth([[item target] validateMenuItem:item]),
    @"isControllers" : Truth([item target] == [TsStatusItemController sharedInstance]),
    @"represented" : OrNull([item representedObject]),
    @"toolTip" : OrNull([item toolTip]),
    @"fontSize" : @([[[item attributedTitle] attribute:NSFontAttributeName atIndex:0
                                        effectiveRange:nullptr] pointSize]),
  }];
  if ([item isKindOfClass:[TsAccountStatusMenuItem class]]) {
    auto* account = static_cast<TsAccountStatusMenuItem*>(item);
    [description addEntriesFromDictionary:@{
      @"color" : ColorText([account color]),
      @"count" : @([account count]),
      @"isInError" : Truth([account isInError]),
    }];
  }
  return description;
}

NSArray* DescribeItems(NSMenu* menu) {
  NSMutableArray* items = [NSMutableArray array];
  for (NSMenuItem* item in [menu itemArray]) [items addObject:DescribeItem(item)];
  return items;
}

// The items of a menu that the controller has filled.
id fill(NSString* type, bool includesMessages) {
  auto menu = Adopt([[NSMenu alloc] init]);
  [[TsStatusItemController sharedInstance] menuNeedsUpdate:menu type:type includeMessage:includesMessages];
  return DescribeItems(menu);
}

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
  return @{
    @"isShown" : Truth(item != nil),
    @"title" : OrNull([item title]),
    @"length" : @([item length]),
    @"image" : OrNull(DescribeImage([item image])),
  };
}

double titleWidth(NSString* title) {
  return [title sizeWithAttributes:@{NSFontAttributeName : [NSFont menuBarFontOfSize:0]}].width;
}

// How the badge of an account looks, and whether it is the one of this text.
id badge(NSString* colorText, int count, bool isInError, NSString* text) {
  NSColor* color = [NSColor ts_colorWithHexColorString:colorText];
  auto item = Adopt([[TsAccountStatusMenuItem alloc] initWithTitle:@"Account"
                                                             color:color
                                                            action:nullptr
                                                     keyEquivalent:@""]);
  [item setCount:static_cast<NSUInteger>(count)];
  [item setIsInError:isInError];
  return @[ DescribeImage([item image]), Truth([item image] == AccountBadge(color, text)) ];
}

id hexColor(NSString* text) { return ColorText([NSColor ts_colorWithHexColorString:text]); }

id format(NSString* pattern, NSString* text, NSNumber* number) {
  return number != nil ? [pattern ts_formatWithText:text number:[number integerValue]]
                       : [pattern ts_formatWithText:text];
}

id dockMenu() {
  return DescribeItems([[NSApp delegate] performSelector:@selector(applicationDockMenu:) withObject:NSApp]);
}

// Chooses a row of its own making.
void perform(NSString* action, NSString* represented) {
  auto item = Adopt([[NSMenuItem alloc] init]);
  [item setRepresentedObject:represented];
  [NSApp sendAction:NSSelectorFromString(action) to:[TsStatusItemController sharedInstance] from:item];
}

void performOnDelegate(NSString* action) {
  [NSApp sendAction:NSSelectorFromString(action) to:[NSApp delegate] from:nil];
}

bool hasItem() { return [[TsStatusItemController sharedInstance] statusItem] != nil; }

}  // namespace

void AttachStatusItemProbe(v8::Local<v8::Object> exports) {
  PROBE(fill);
  PROBE(timeRebuild);
  PROBE(state);
  PROBE(titleWidth);
  PROBE(badge);
  PROBE(hexColor);
  PROBE(format);
  PROBE(dockMenu);
  PROBE(perform);
  PROBE(performOnDelegate);
  PROBE(hasItem);
}
