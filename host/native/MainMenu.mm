#include "native/MainMenu.h"

#import <AppKit/AppKit.h>

#include <span>

namespace {

constexpr NSUInteger kCommand = NSCommandKeyMask;
constexpr NSUInteger kCommandShift = NSCommandKeyMask | NSShiftKeyMask;
constexpr NSUInteger kCommandOption = NSCommandKeyMask | NSAlternateKeyMask;
constexpr NSUInteger kCommandControl = NSCommandKeyMask | NSControlKeyMask;

NSString* const kUpArrow = @"\uf700";
NSString* const kDownArrow = @"\uf701";
NSString* const kLeftArrow = @"\uf702";
NSString* const kRightArrow = @"\uf703";

struct ItemDescription {
  NSString* title;  // key of the localised title; nil is a separator
  int commandId = 0;
  NSString* key = @"";
  NSUInteger modifiers = kCommand;
  NSString* action = @"performCommand:";
};

struct MenuDescription {
  NSString* title;
  std::span<const ItemDescription> items;
};

const ItemDescription kSeparator{nil};

const ItemDescription kApplicationItems[] = {
    {@"About TessaroHost", 100, @"", 0, @"orderFrontStandardAboutPanel:"},
    kSeparator,
    {@"Preferences…", 101, @","},
    {@"Check for Updates…", 102},
    kSeparator,
    {@"Hide TessaroHost", 103, @"h", kCommand, @"hide:"},
    {@"Quit TessaroHost", 104, @"q", kCommand, @"terminate:"},
};

const ItemDescription kFileItems[] = {
    {@"New Message", 200, @"n"},
    {@"New Tab", 201, @"t"},
    kSeparator,
    {@"Close Tab", 202, @"w"},
    {@"Save as PDF…", 203, @"S", kCommandShift},
    {@"Print…", 204, @"p"},
    {@"Send Again…", 205, @"D", kCommandShift},
};

const ItemDescription kEditItems[] = {
    {@"Undo", 300, @"z"},
    {@"Redo", 301, @"Z", kCommandShift},
    kSeparator,
    {@"Cut", 302, @"x"},
    {@"Copy", 303, @"c"},
    {@"Paste", 304, @"v"},
    {@"Select All", 305, @"a"},
    kSeparator,
    {@"Find…", 306, @"f"},
    {@"Emoji & Symbols", 307, @" ", kCommandControl},
};

const ItemDescription kViewItems[] = {
    {@"Reload", 400, @"r"},
    {@"Actual Size", 401, @"0"},
    {@"Zoom In", 402, @"+"},
    {@"Zoom Out", 403, @"-"},
    kSeparator,
    {@"Show Toolbar", 404, @"t", kCommandOption},
    kSeparator,
    {@"Back", 405, kLeftArrow},
    {@"Forward", 406, kRightArrow},
    {@"Previous Conversation", 407, kUpArrow},
    {@"Next Conversation", 408, kDownArrow},
};

const ItemDescription kWindowItems[] = {
    {@"Minimize", 500, @"m", kCommand, @"performMiniaturize:"},
    {@"Zoom", 501, @"", 0, @"performZoom:"},
    kSeparator,
    {@"Previous Tab", 502, @"["},
    {@"Next Tab", 503, @"]"},
    kSeparator,
    {@"Previous Account", 504, kUpArrow, kCommandOption},
    {@"Next Account", 505, kDownArrow, kCommandOption},
};

const ItemDescription kHelpItems[] = {
    {@"TessaroHost Help", 600, @"?"},
};

const MenuDescription kMainMenu[] = {
    {@"TessaroHost", kApplicationItems}, {@"File", kFileItems}, {@"Edit", kEditItems}, {@"View", kViewItems},
    {@"Window", kWindowItems},           {@"Help", kHelpItems},
};

NSString* Localized(NSString* key) { return [[NSBundle mainBundle] localizedStringForKey:key value:key table:nil]; }

void AddItem(NSMenu* menu, const ItemDescription& description) {
  if (description.title == nil) return [menu addItem:[NSMenuItem separatorItem]];
  auto item = Adopt([[NSMenuItem alloc] initWithTitle:Localized(description.title)
                                               action:NSSelectorFromString(description.action)
                                        keyEquivalent:description.key]);
  [item setKeyEquivalentModifierMask:[description.key length] == 0 ? 0 : description.modifiers];
  [item setRepresentedObject:@{@"commandId" : @(description.commandId)}];
  [menu addItem:item];
}

Ref<NSMenu> MakeMenu(const MenuDescription& description) {
  auto menu = Adopt([[NSMenu alloc] initWithTitle:Localized(description.title)]);
  for (const auto& item : description.items) AddItem(menu, item);
  return menu;
}

NSDictionary* DescribeItem(NSMenuItem* item) {
  NSMutableDictionary* description = [NSMutableDictionary dictionaryWithObject:[item title] forKey:@"title"];
  if ([[item keyEquivalent] length] > 0) {
    [description setObject:[item keyEquivalent] forKey:@"key"];
    [description setObject:@([item keyEquivalentModifierMask]) forKey:@"modifiers"];
  }
  if (NSDictionary* command = [item representedObject]) [description addEntriesFromDictionary:command];
  if ([item hasSubmenu]) [description setObject:DescribeMenu([item submenu]) forKey:@"items"];
  return description;
}

}  // namespace

Ref<NSMenu> MakeMainMenu() {
  auto main = Adopt([[NSMenu alloc] initWithTitle:@"TessaroHost"]);
  for (const auto& description : kMainMenu) {
    auto item = Adopt([[NSMenuItem alloc] initWithTitle:Localized(description.title) action:nullptr keyEquivalent:@""]);
    [main addItem:item];
    [main setSubmenu:MakeMenu(description) forItem:item];
  }
  return main;
}

NSArray* DescribeMenu(NSMenu* menu) {
  NSMutableArray* items = [NSMutableArray array];
  for (NSMenuItem* item in [menu itemArray]) [items addObject:DescribeItem(item)];
  return items;
}
