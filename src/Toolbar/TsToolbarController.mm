#import "Toolbar/TsToolbarController.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/SystemAppearance.h"
#include "Toolbar/TsToolbarDefinitions.h"
#include "Utilities/TsCallbackSlot.h"
#include "Window/WindowUtils.h"

namespace platform = tessaro::platform;

namespace {

NSString* const kThemeChanged = @"AppleInterfaceThemeChangedNotification";
constexpr NSSize kButtonSize = {48, 32};
// Single precision, as in earlier versions.
constexpr NSTimeInterval kPaletteCheckInterval = 0.1F;

NSMutableArray* AllControllers() {
  static Forever<Ref<NSMutableArray>> controllers(Adopt([[NSMutableArray alloc] init]));
  return controllers->get();
}

NSArray* ArrayOrNone(id value) { return As<NSArray>(value) != nil ? value : @[]; }

NSImage* TemplateImage(NSString* name) {
  NSImage* image = name != nil ? [NSImage imageNamed:name] : nil;
  [image setTemplate:YES];
  return image;
}

bool IsSpace(NSToolbarItem* item, bool mayBeFlexible) {
  NSString* identifier = [item itemIdentifier];
  return [identifier isEqualToString:NSToolbarSpaceItemIdentifier] ||
         (mayBeFlexible && [identifier isEqualToString:NSToolbarFlexibleSpaceItemIdentifier]);
}

NSToolbarItem* ItemWithView(NSToolbar* toolbar, id view) {
  for (NSToolbarItem* item in [toolbar items]) {
    if ([item view] == view) return item;
  }
  return nil;
}

void SetImage(id owner, NSImage* image) {
  if ([owner respondsToSelector:@selector(setImage:)]) [owner setImage:image];
}

// Sends `selector` to `observer` whenever the desktop's appearance changes. The notification server may be missing:
// toolbars work without it.
void ObserveTheme(id observer, SEL selector) {
  platform::AnnounceAppearanceChanges();
  @try {
    [[NSDistributedNotificationCenter defaultCenter] addObserver:observer
                                                        selector:selector
                                                            name:kThemeChanged
                                                          object:nil];
  } @catch (NSException* exception) {
    TsLogWarning(@"Changes of the appearance won't be noticed: %@", [exception reason]);
  }
}

void LeaveTheme(id observer) {
  @try {
    [[NSDistributedNotificationCenter defaultCenter] removeObserver:observer name:kThemeChanged object:nil];
  } @catch (NSException* exception) {
    TsLogDebug(@"The appearance was not watched: %@", [exception reason]);
  }
}

}  // namespace

@implementation TsToolbarItem

@synthesize controller = _controller;

- (void)validate {
  [super validate];
  if (_controller == nil) return;
  const BOOL isEnabled = [_controller realValidateToolbarItem:self];
  [As<NSControl>([self view]) setEnabled:isEnabled];
  [self setEnabled:isEnabled];
}

@end

@implementation TsToolbar

@synthesize needToShowAddTabButton = _needToShowAddTabButton;
@synthesize toolbarController = _toolbarController;

- (void)runCustomizationPalette:(id)sender {
  if ([_toolbarController isAddTabViewShowing]) {
    [_toolbarController hideAddTabButton];
    _needToShowAddTabButton = YES;
  }
  [NSTimer scheduledTimerWithTimeInterval:kPaletteCheckInterval
                                   target:self
                                 selector:@selector(timerFired:)
                                 userInfo:nil
                                  repeats:YES];
  [super runCustomizationPalette:sender];
}

// There is no notification when the palette closes.
- (void)timerFired:(NSTimer*)timer {
  if ([self customizationPaletteIsRunning]) return;
  [timer invalidate];
  if (_needToShowAddTabButton) [_toolbarController showAddTabButton];
}

@end

@implementation TsToolbarController

+ (TsToolbarController*)toolbarControllerForWindowId:(int)windowId {
  for (TsToolbarController* controller in AllControllers()) {
    if ([controller windowId] == windowId) return controller;
  }
  return nil;
}

- (instancetype)initWithDictionary:(NSDictionary*)definition {
  self = [super init];
  if (self == nil) return nil;
  _isDarkMode = platform::IsDarkMode();
  ObserveTheme(self, @selector(darkModeChanged:));
  TsAssert([definition objectForKey:@"identifier"] != nil, "need an identifier");
  TsAssert([definition objectForKey:@"items"] != nil, "need toolbar items.");
  TsAssert(As<NSDictionary>([definition objectForKey:@"options"]) != nil, "need a dictionary of options.");
  _toolbarIdentifier = Retain([[definition objectForKey:@"identifier"] description]);
  _toolbarDefinitions = Retain(ArrayOrNone([definition objectForKey:@"items"]));
  _options = Retain(static_cast<NSDictionary*>([definition objectForKey:@"options"]));
  _toolbarItems = Adopt([[NSMutableDictionary alloc] init]);
  return self;
}

// The window may outlive the controller: clear everything that points here.
- (void)dealloc {
  LeaveTheme(self);
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [_addTabViewController setActionDelegate:nil];
  for (TsToolbarItem* item in [_toolbarItems allValues]) [self releaseItem:item];
  TsToolbar* toolbar = [self toolbar];
  if ([toolbar toolbarController] == self) {
    [toolbar setToolbarController:nil];
    [toolbar setDelegate:nil];
  }
  [super dealloc];
}

- (void)releaseItem:(TsToolbarItem*)item {
  [item setController:nil];
  [item setTarget:nil];
  [As<NSControl>([item view]) setTarget:nil];
  // The item and its menu form own each other.
  [[item menuFormRepresentation] setTarget:nil];
  [[item menuFormRepresentation] setRepresentedObject:nil];
}

- (int)windowId {
  return _windowId;
}

- (NSWindow*)window {
  return TsLivingWindow(_window);
}

- (TsToolbar*)toolbar {
  return As<TsToolbar>([[self window] toolbar]);
}

// ---- The window

- (void)addToWindow:(NSWindow*)window withId:(int)windowId {
  TsAssert(_window == nil, "Cannot call this method twice.");
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(windowWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:window];
  _window = window;
  _windowId = windowId;
  [self installToolbar];
  [AllControllers() addObject:self];
  [self createAddTabView];
}

- (void)installToolbar {
  const auto toolbar = Adopt([[TsToolbar alloc] initWithIdentifier:_toolbarIdentifier]);
  [toolbar setAllowsExtensionItems:TsIsTrue(_options, @"allows-extension-items?")];
  [toolbar setAllowsUserCustomization:TsIsTrue(_options, @"allows-user-customization?")];
  [toolbar setAutosavesConfiguration:TsIsTrue(_options, @"autosaves-configuration?")];
  [toolbar setShowsBaselineSeparator:NO];
  [toolbar setToolbarController:self];
  [toolbar setDelegate:self];
  [_window setToolbar:toolbar];
}

- (void)windowWillClose:(NSNotification*)notification {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  // A click on one of the items may be closing the window: this object must outlive the click.
  static_cast<void>(Retain(self).Autoreleased());
  [AllControllers() removeObjectIdenticalTo:self];
}

// ---- The toolbar's questions

- (NSArray*)toolbarDefaultItemIdentifiers:(NSToolbar*)toolbar {
  return TsIdentifiersOfMarkedItems(_toolbarDefinitions, @"default?");
}

- (NSArray*)toolbarSelectableItemIdentifiers:(NSToolbar*)toolbar {
  return TsIdentifiersOfMarkedItems(_toolbarDefinitions, @"selectable?");
}

- (NSArray*)toolbarAllowedItemIdentifiers:(NSToolbar*)toolbar {
  return TsAllowedIdentifiers(_toolbarDefinitions);
}

- (NSToolbarItem*)toolbar:(NSToolbar*)toolbar
        itemForItemIdentifier:(NSString*)identifier
    willBeInsertedIntoToolbar:(BOOL)isInserted {
  NSDictionary* definition = TsDefinitionWithIdentifier(_toolbarDefinitions, identifier);
  // A view can't be in the palette and in the bar: the palette gets an item of its own.
  if (definition != nil && !isInserted) return [self itemOfDefinition:definition].Autoreleased();
  if (NSToolbarItem* item = [_toolbarItems objectForKey:identifier]) return item;
  if (definition == nil) return nil;
  auto item = [self itemOfDefinition:definition];
  if (TsIsTrue(definition, @"selected?")) [toolbar setSelectedItemIdentifier:identifier];
  [_toolbarItems setObject:item forKey:identifier];
  return item.Autoreleased();
}

- (Ref<TsToolbarItem>)itemOfDefinition:(NSDictionary*)definition {
  auto item = Adopt([[TsToolbarItem alloc] initWithItemIdentifier:TsText(definition, @"identifier")]);
  NSString* label = TsText(definition, @"label");
  NSString* paletteLabel = TsText(definition, @"palette-label");
  NSString* toolTip = TsText(definition, @"tooltip");
  [item setController:self];
  [item setAction:@selector(toolbarAction:)];
  [item setTarget:self];
  [item setLabel:label];
  [item setPaletteLabel:paletteLabel != nil ? paletteLabel : label];
  if (NSImage* image = [self imageForItem:definition]) {
    if (TsIsTrue(definition, @"button?")) [self makeButtonOf:item label:label];
    [item setImage:image];
  }
  if (toolTip == nil) toolTip = label;
  if (toolTip != nil) [item setToolTip:toolTip];
  return item;
}

- (void)makeButtonOf:(TsToolbarItem*)item label:(NSString*)label {
  const auto button = Adopt([[NSButton alloc] initWithFrame:NSMakeRect(0, 0, kButtonSize.width, kButtonSize.height)]);
  [item setMinSize:kButtonSize];
  [item setMaxSize:kButtonSize];
  [button setBezelStyle:NSTexturedRoundedBezelStyle];
  [button setAction:@selector(toolbarAction:)];
  [button setTarget:self];
  [item setView:button];
  const auto menuItem = Adopt([[NSMenuItem alloc] initWithTitle:TsOrEmpty(label)
                                                         action:@selector(toolbarAction:)
                                                  keyEquivalent:@""]);
  [menuItem setTarget:self];
  [menuItem setRepresentedObject:item];
  [item setMenuFormRepresentation:menuItem];
}

// ---- Images

- (NSImage*)imageForItem:(NSDictionary*)definition {
  NSString* name = TsText(definition, @"image-name");
  if (name == nil) return nil;
  NSImage* dark = _isDarkMode ? TemplateImage([name stringByAppendingString:@"--wdark"]) : nil;
  return dark != nil ? dark : TemplateImage(name);
}

- (void)darkModeChanged:(NSNotification*)notification {
  platform::MainQueue::Shared().Post([kept = Retain(self)] { [kept showAppearance]; });
}

- (void)showAppearance {
  _isDarkMode = platform::IsDarkMode();
  [static_cast<TsAddTabView*>([_addTabViewController view]) setIsDarkMode:_isDarkMode];
  for (NSToolbarItem* item in [[self toolbar] items]) {
    NSDictionary* definition = TsDefinitionWithIdentifier(_toolbarDefinitions, [item itemIdentifier]);
    NSImage* image = definition != nil ? [self imageForItem:definition] : nil;
    if (image != nil) SetImage([item image] != nil ? static_cast<id>(item) : [item view], image);
  }
}

- (void)changeToolbarItemWithIdentifier:(NSString*)identifier image:(NSString*)imageName {
  for (NSToolbarItem* item in [[self toolbar] visibleItems]) {
    if (![[item itemIdentifier] isEqualToString:identifier]) continue;
    NSButton* button = As<NSButton>([item view]);
    if (button != nil) return [button setImage:TemplateImage(imageName)];
  }
}

// ---- Script's part

- (void)toolbarAction:(id)sender {
  const TsCallbackSlot& callback = TsCallback(TsSlot::ToolbarAction);
  if (!callback.IsSet()) return;
  id item = sender;
  if (As<NSView>(sender) != nil) item = ItemWithView([self toolbar], sender);
  if (As<NSMenuItem>(sender) != nil) item = [sender representedObject];
  NSString* identifier = [item itemIdentifier];
  if (identifier == nil) {
    TsLogWarning(@"Need item identifier.");
    return;
  }
  callback.Call({std::int32_t{_windowId}, identifier});
}

- (BOOL)validateToolbarItem:(NSToolbarItem*)item {
  return [self realValidateToolbarItem:item];
}

- (BOOL)validateMenuItem:(NSMenuItem*)item {
  return [self realValidateToolbarItem:[item representedObject]];
}

- (BOOL)realValidateToolbarItem:(id)item {
  NSString* identifier = [item itemIdentifier];
  if (identifier == nil) {
    TsLogWarning(@"Need item identifier.");
    return NO;
  }
  const TsCallbackSlot& callback = TsCallback(TsSlot::ToolbarValidation);
  if (!callback.IsSet()) return NO;
  const auto result = callback.CallForBoolean({std::int32_t{_windowId}, identifier});
  if (const bool* isValid = std::get_if<bool>(&result)) return *isValid;
  TsLogWarning(@"Unknown result from callback function! %d", std::get<std::int32_t>(result));
  return NO;
}

// ---- The add-tab button

- (void)createAddTabView {
  _addTabViewController = Adopt([[TsAddTabViewController alloc] initWithActionDelegate:self]);
  [_addTabViewController setLayoutAttribute:NSLayoutAttributeRight];
  [_window addTitlebarAccessoryViewController:_addTabViewController];
  [[_addTabViewController view] setHidden:YES];
}

- (void)addTabViewButtonClicked {
  TsCallback(TsSlot::ToolbarAddTab).Call({std::int32_t{_windowId}});
}

- (BOOL)isAddTabViewShowing {
  return _addTabViewController && ![[_addTabViewController view] isHidden];
}

- (void)showAddTabButton {
  TsToolbar* toolbar = [self toolbar];
  if ([toolbar customizationPaletteIsRunning]) {
    [toolbar setNeedToShowAddTabButton:YES];
    return;
  }
  if ([self isAddTabViewShowing]) return;
  [[_addTabViewController view] setHidden:NO];
  if (!IsSpace([[toolbar items] lastObject], true)) {
    [toolbar insertItemWithItemIdentifier:NSToolbarSpaceItemIdentifier
                                  atIndex:static_cast<NSInteger>([[toolbar items] count])];
  }
  [[_addTabViewController view] setNeedsDisplay:YES];
}

- (void)hideAddTabButton {
  TsToolbar* toolbar = [self toolbar];
  if ([toolbar customizationPaletteIsRunning]) {
    [toolbar setNeedToShowAddTabButton:NO];
    return;
  }
  if (![self isAddTabViewShowing]) return;
  [[_addTabViewController view] setHidden:YES];
  if (IsSpace([[toolbar items] lastObject], false)) {
    [toolbar removeItemAtIndex:static_cast<NSInteger>([[toolbar items] count]) - 1];
  }
  [[_addTabViewController view] setNeedsDisplay:YES];
}

@end
