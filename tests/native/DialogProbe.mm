#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/Linux/Theme/XSettings.h"
#include "Probe.h"

namespace {

// On the display, from its upper left.
NSArray* CentreOnDisplay(NSView* view, NSRect rect) {
  const NSRect inWindow = [view convertRect:rect toView:nil];
  const NSPoint centre = [[view window] convertBaseToScreen:NSMakePoint(NSMidX(inWindow), NSMidY(inWindow))];
  return @[ @(centre.x), @([[[view window] screen] frame].size.height - centre.y) ];
}

NSArray* SizeOf(NSView* view) { return @[ @([view bounds].size.width), @([view bounds].size.height) ]; }

NSString* TextOf(id value) {
  if (value == nil) return @"";
  return As<NSString>(value) != nil ? value : NSStringFromClass([value class]);
}

NSArray* DescribeRows(NSTableView* table) {
  NSMutableArray* rows = [NSMutableArray array];
  for (NSInteger row = 0; row < [table numberOfRows]; ++row) {
    NSMutableArray* texts = [NSMutableArray array];
    for (NSTableColumn* column in [table tableColumns]) {
      [texts addObject:TextOf([[table dataSource] tableView:table objectValueForTableColumn:column row:row])];
    }
    [rows addObject:@{
      @"texts" : texts,
      @"centre" : CentreOnDisplay(table, NSIntersectionRect([table rectOfRow:row], [table visibleRect])),
      @"isSelected" : Truth([table isRowSelected:row]),
    }];
  }
  return rows;
}

void Describe(NSView* view, NSMutableArray* descriptions) {
  NSMutableDictionary* description = [NSMutableDictionary dictionaryWithDictionary:@{
    @"class" : NSStringFromClass([view class]),
    @"centre" : CentreOnDisplay(view, [view bounds]),
    @"size" : SizeOf(view),
  }];
  if (NSButton* button = As<NSButton>(view)) {
    [description setObject:[button title] forKey:@"title"];
    [description setObject:[button keyEquivalent] forKey:@"key"];
  }
  if (NSPopUpButton* menu = As<NSPopUpButton>(view)) [description setObject:[menu itemTitles] forKey:@"items"];
  if (NSControl* control = As<NSControl>(view)) [description setObject:Truth([control isEnabled]) forKey:@"isEnabled"];
  if (NSTextField* field = As<NSTextField>(view)) [description setObject:[field stringValue] forKey:@"text"];
  if (NSTextView* text = As<NSTextView>(view)) [description setObject:[text string] forKey:@"text"];
  if (NSTableView* table = As<NSTableView>(view)) [description setObject:DescribeRows(table) forKey:@"rows"];
  [descriptions addObject:description];
  // While a field is edited it has an editor within.
  if (As<NSTextField>(view) != nil) return;
  for (NSView* subview in [view subviews]) Describe(subview, descriptions);
}

// GNUstep's file panels have no title in their frame.
NSString* TitleOf(NSWindow* window) {
  if ([window isKindOfClass:[NSSavePanel class]]) return NSStringFromClass([window class]);
  return [window title];
}

// The title of the button, or the class of the view, that has the keyboard; for an edited field, the field's class.
NSString* FocusOf(NSWindow* window) {
  id view = [window firstResponder];
  if (NSButton* button = As<NSButton>(view)) return [button title];
  if ([As<NSTextView>(view) isFieldEditor]) view = [As<NSTextView>(view) delegate];
  return NSStringFromClass([view class]);
}

// The visible windows that have a title, with their views.
id windows() {
  NSMutableArray* shown = [NSMutableArray array];
  for (NSWindow* window in [NSApp windows]) {
    if (![window isVisible] || ![window contentView] || [TitleOf(window) length] == 0) continue;
    NSMutableArray* views = [NSMutableArray array];
    Describe([window contentView], views);
    [shown addObject:@{
      @"title" : TitleOf(window),
      @"isKey" : Truth([window isKeyWindow]),
      @"focus" : FocusOf(window),
      @"size" : SizeOf([window contentView]),
      @"views" : views,
    }];
  }
  return shown;
}

// The texts among the settings of an XSETTINGS property.
id parseSessionSettings(std::string_view property) {
  NSMutableDictionary* texts = [NSMutableDictionary dictionary];
  for (const auto& [name, value] : tessaro::platform::XSettings::Parse(property)) {
    const auto* text = std::get_if<std::string>(&value);
    if (text != nullptr) [texts setObject:TsNSString(*text) forKey:TsNSString(name)];
  }
  return texts;
}

// Changes the X server's resources many times at once.
void floodResources(int changes) {
  const tessaro::platform::XConnection connection;
  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection.get())).data->root;
  for (int i = 0; i < changes; ++i) {
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, root, XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8, 0,
                        nullptr);
  }
  std::free(xcb_get_input_focus_reply(connection.get(), xcb_get_input_focus(connection.get()), nullptr));
}

// As its close button would.
void closeWindow(NSString* title) {
  for (NSWindow* window in [NSApp windows]) {
    if ([TitleOf(window) isEqual:title]) return [window performClose:nil];
  }
}

NSButton* ButtonIn(NSView* view, NSString* title) {
  NSButton* button = As<NSButton>(view);
  if ([[button title] isEqual:title]) return button;
  for (NSView* subview in [view subviews]) {
    if (NSButton* found = ButtonIn(subview, title)) return found;
  }
  return nil;
}

// Whether there is such a button, and it can be pressed.
bool pressButton(NSString* title, NSString* buttonTitle) {
  for (NSWindow* window in [NSApp windows]) {
    if (![window isVisible] || ![[window title] isEqual:title]) continue;
    NSButton* button = ButtonIn([window contentView], buttonTitle);
    if (![button isEnabled]) continue;
    [button performClick:nil];
    return true;
  }
  return false;
}

PROBES("dialogs", windows, closeWindow, floodResources, parseSessionSettings, pressButton);

}  // namespace
