#import "Shortcuts/TsGlobalShortcut.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSEvent+TsKeyboard.h"
#include "Platform/Cocoa.h"
#include "Platform/HotKeys.h"
#import "Shortcuts/MASShortcut.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

namespace {

NSString* const kMonitorUpdated = @"TsKeyboardShortcutMonitorUpdated";
NSString* const kAction = @"TsGlobalShortcutAction";

constexpr unsigned short kTab = 48;
constexpr unsigned short kDelete = 51;
constexpr unsigned short kForwardDelete = 117;
constexpr unsigned short kEscape = 53;
constexpr unsigned short kQ = 12;
constexpr unsigned short kW = 13;

NSUserDefaults* Defaults() { return [NSUserDefaults standardUserDefaults]; }

bool HasShortcut(NSMenuItem* item, MASShortcut* shortcut) {
  NSString* key = [item keyEquivalent];
  if ([key length] == 0 || [item isHidden]) return false;
  // A capital letter implies Shift.
  const bool isCapital = ![key isEqualToString:[key lowercaseString]];
  constexpr NSUInteger kModifiers = kTsCommand | kTsOption | kTsControl | kTsShift;
  const NSUInteger modifiers = ([item keyEquivalentModifierMask] & kModifiers) | (isCapital ? kTsShift : 0);
  return modifiers == [shortcut modifierFlags] && [[key lowercaseString] isEqualToString:[shortcut keyEquivalent]];
}

NSMenuItem* FindItem(NSMenu* menu, MASShortcut* shortcut) {
  for (NSMenuItem* item in [menu itemArray]) {
    NSMenuItem* found = [item hasSubmenu]             ? FindItem([item submenu], shortcut)
                        : HasShortcut(item, shortcut) ? item
                                                      : nil;
    if (found != nil) return found;
  }
  return nil;
}

// The shortcut as a system-wide hot key.
platform::HotKey ToHotKey(MASShortcut* shortcut) {
  const auto holds = [flags = [shortcut modifierFlags]](NSUInteger modifier) { return (flags & modifier) != 0; };
  return {
      .virtualKeyCode = [shortcut keyCode],
      .command = holds(kTsCommand),
      .option = holds(kTsOption),
      .control = holds(kTsControl),
      .shift = holds(kTsShift),
  };
}

// Why a shortcut in this state does not work, in a sentence; nil when it works.
NSString* WhyInactive(MASShortcut* shortcut, platform::HotKeyStatus status) {
  switch (status) {
    case platform::HotKeyStatus::Active:
      return nil;
    case platform::HotKeyStatus::Taken:
      return [NSString stringWithFormat:@"%@ is already used by another application or by the system.", shortcut];
    case platform::HotKeyStatus::NotOnKeyboard:
      return [NSString stringWithFormat:@"This keyboard has no %@.", shortcut];
    case platform::HotKeyStatus::Unsupported:
      return @"This session doesn’t let applications have shortcuts outside their own windows.";
  }
}

id StoredObject(NSString* defaultsKey) { return [Defaults() objectForKey:defaultsKey]; }

MASShortcut* ShortcutFrom(id stored, NSString* defaultsKey) {
  if (stored == nil) return nil;
  NSError* error = nil;
  MASShortcut* shortcut = [NSKeyedUnarchiver unarchivedObjectOfClass:[MASShortcut class]
                                                            fromData:As<NSData>(stored)
                                                               error:&error];
  if (shortcut == nil) TsLogWarning(@"No shortcut is stored under %@: %@", defaultsKey, [error localizedDescription]);
  return shortcut;
}

bool EndsRecording(MASShortcut* shortcut) {
  const unsigned short key = [shortcut keyCode];
  return [shortcut modifierFlags] == 0 && (key == kDelete || key == kForwardDelete || key == kEscape);
}

// These close windows and quit the application, also while a shortcut is recorded.
bool IsReserved(MASShortcut* shortcut) {
  const unsigned short key = [shortcut keyCode];
  return [shortcut modifierFlags] == kTsCommand && (key == kW || key == kQ);
}

NSDictionary* Status(NSString* shortcut, NSString* error, bool isExisting, bool isValid, bool isMonitoring) {
  return @{
    @"shortcut" : TsOrEmpty(shortcut),
    @"error" : TsOrEmpty(error),
    @"existing?" : @(isExisting),
    @"valid?" : @(isValid),
    @"monitoring?" : @(isMonitoring),
  };
}

// A key of the user defaults, the shortcut last read from it, and its registration.
class BoundShortcut {
 public:
  BoundShortcut(NSString* defaultsKey, std::function<void()> action)
      : defaultsKey_(Adopt<NSString>([defaultsKey copy])), action_(std::move(action)) {
    Update();
  }

  void Update() {
    id stored = StoredObject(defaultsKey_);
    if (stored == stored_.get() || [stored isEqual:stored_]) return;
    stored_ = Retain<NSObject>(stored);
    registration_.reset();
    MASShortcut* shortcut = ShortcutFrom(stored, defaultsKey_);
    if (shortcut != nil) Listen(shortcut);
  }

 private:
  void Listen(MASShortcut* shortcut) {
    registration_.emplace(ToHotKey(shortcut), action_);
    NSString* reason = WhyInactive(shortcut, registration_->Status());
    if (reason != nil) TsLogWarning(@"The shortcut stored under %@ is not active: %@", defaultsKey_.get(), reason);
  }

  Ref<NSString> defaultsKey_;
  std::function<void()> action_;
  Ref<NSObject> stored_;
  std::optional<platform::HotKeyRegistration> registration_;
};

}  // namespace

// Which shortcuts may be recorded. Main thread only.
@interface TsShortcutValidator : NSObject

+ (instancetype)sharedValidator;

// Whether the shortcut doesn't interfere with typing: a function key, or any key with Command or Control; with Option
// alone, which types letters on many keyboards, only keys that type nothing.
- (BOOL)isShortcutValid:(MASShortcut*)shortcut;

// Whether the shortcut is unavailable: another application or an item of the main menu has it, or the keyboard or the
// session doesn't support it. `explanation` says why in a sentence.
- (BOOL)isShortcutAlreadyTakenBySystem:(MASShortcut*)shortcut explanation:(NSString**)explanation;

@end

@implementation TsShortcutValidator

+ (instancetype)sharedValidator {
  static TsShortcutValidator* const validator = [[self alloc] init];
  return validator;
}

- (BOOL)isShortcutValid:(MASShortcut*)shortcut {
  if ([[shortcut keyCodeString] length] == 0) return NO;
  if (IsFunctionKey([shortcut keyCode])) return YES;
  const NSUInteger modifiers = [shortcut modifierFlags];
  if (modifiers & (kTsCommand | kTsControl)) return YES;
  return (modifiers & kTsOption) != 0 && !IsTypingKey([shortcut keyCode]);
}

- (BOOL)isShortcutAlreadyTakenBySystem:(MASShortcut*)shortcut explanation:(NSString**)explanation {
  NSMenuItem* item = FindItem([NSApp mainMenu], shortcut);
  NSString* reason =
      item != nil ? [NSString stringWithFormat:@"%@ is the shortcut of the menu item “%@”.", shortcut, [item title]]
                  : WhyInactive(shortcut, platform::HotKeyStatusOf(ToHotKey(shortcut)));
  if (reason == nil) return NO;
  if (explanation != nullptr) *explanation = reason;
  return YES;
}

@end

// Actions for the shortcuts stored in the standard user defaults, pressed in any application. Main thread only.
@interface TsShortcutBinder : NSObject {
  std::map<std::string, std::unique_ptr<BoundShortcut>> _bound;
}

+ (instancetype)sharedBinder;

// Calls `action` whenever the shortcut stored under the key is pressed; replaces the key's earlier action. A shortcut
// that can't be registered is logged.
- (void)bindShortcutWithDefaultsKey:(NSString*)key toAction:(std::function<void()>)action;

@end

@implementation TsShortcutBinder

+ (instancetype)sharedBinder {
  static TsShortcutBinder* const binder = [[self alloc] init];
  return binder;
}

- (instancetype)init {
  self = [super init];
  if (self == nil) return nil;
  TsObserveOnMainQueue(NSUserDefaultsDidChangeNotification, [self](NSNotification*) {
    for (const auto& [key, shortcut] : _bound) shortcut->Update();
  });
  return self;
}

- (void)bindShortcutWithDefaultsKey:(NSString*)key toAction:(std::function<void()>)action {
  _bound[TsStdString(key)] = std::make_unique<BoundShortcut>(key, std::move(action));
}

@end

@implementation TsGlobalShortcut

+ (instancetype)sharedInstance {
  static TsGlobalShortcut* const instance = [[self alloc] init];
  return instance;
}

- (instancetype)init {
  self = [super init];
  if (self == nil) return nil;
  const auto transformer = Adopt([[MASDictionaryTransformer alloc] init]);
  [NSValueTransformer setValueTransformer:transformer forName:MASDictionaryTransformerName];
  return self;
}

- (id)eventMonitor {
  return _eventMonitor;
}

- (NSString*)defaultsKey {
  return _defaultsKey;
}

- (id)savedShortcutData {
  return _savedShortcutData;
}

// ---- Recording

- (void)startMonitoringKeyboardEvents:(NSString*)key {
  if (_eventMonitor) return TsLogError(@"Already monitoring: Cannot turn on monitor for shortcuts.");
  _defaultsKey = Adopt<NSString>([key copy]);
  _savedShortcutData = Retain<NSObject>([Defaults() objectForKey:key]);
  // The old shortcut must not act while the new one is typed.
  [Defaults() removeObjectForKey:key];
  _eventMonitor = Retain<NSObject>([NSEvent
      addLocalMonitorForEventsMatchingMask:NSKeyDownMask | NSFlagsChangedMask
                                   handler:[self](NSEvent* event) { return [self recordEvent:event]; }]);
  [self postNotificationWith:nil error:nil];
}

// The event for later handlers, or nil when it is consumed.
- (NSEvent*)recordEvent:(NSEvent*)event {
  if ([event type] == kTsKeyDown && [event ts_virtualKeyCode] == kTab) return event;
  [self recordShortcut:[MASShortcut shortcutWithEvent:event]];
  return nil;
}

- (void)recordShortcut:(MASShortcut*)shortcut {
  if (EndsRecording(shortcut)) return [self stopMonitoringKeyboardEvents];
  if (IsReserved(shortcut)) return;
  if ([[shortcut keyCodeString] length] == 0) return [self postNotificationWith:shortcut error:nil];

  TsShortcutValidator* validator = [TsShortcutValidator sharedValidator];
  if (![validator isShortcutValid:shortcut]) return NSBeep();
  NSString* explanation = nil;
  if ([validator isShortcutAlreadyTakenBySystem:shortcut explanation:&explanation]) {
    return [self postNotificationWith:shortcut error:explanation];
  }
  [self acceptShortcut:shortcut];
}

- (void)acceptShortcut:(MASShortcut*)shortcut {
  [self stopMonitoring];
  [Defaults() setObject:[NSKeyedArchiver archivedDataWithRootObject:shortcut] forKey:_defaultsKey];
  [self postNotificationWith:shortcut error:nil];
}

- (void)stopMonitoring {
  if (!_eventMonitor) return;
  [NSEvent removeMonitor:_eventMonitor];
  _eventMonitor = nullptr;
}

- (void)stopMonitoringKeyboardEvents {
  [self stopMonitoring];
  if (!_defaultsKey) return;
  if (_savedShortcutData) {
    [Defaults() setObject:_savedShortcutData forKey:_defaultsKey];
    _savedShortcutData = nullptr;
  }
  NSString* stored = [self shortcutDescriptionForDefaultsKey:_defaultsKey];
  [self postNotificationWithUserInfo:Status(stored, nil, true, true, false)];
  // An observer may have begun another recording.
  if (!_eventMonitor) _defaultsKey = nullptr;
}

- (void)postNotificationWith:(MASShortcut*)shortcut error:(NSString*)explanation {
  NSLog(@"Posting notification! %@ %@", shortcut, explanation);
  [self postNotificationWithUserInfo:Status([shortcut description], explanation, static_cast<bool>(_savedShortcutData),
                                            explanation == nil, static_cast<bool>(_eventMonitor))];
}

- (void)postNotificationWithUserInfo:(NSDictionary*)userInfo {
  TsPost(kMonitorUpdated, self, userInfo);
}

// ---- Stored shortcuts

- (void)bindDefaultsKey:(NSString*)key {
  const auto action = [self, key = Adopt<NSString>([key copy])] {
    TsPost(kAction, self, @{@"defaults-key" : key.get()});
  };
  [[TsShortcutBinder sharedBinder] bindShortcutWithDefaultsKey:key toAction:action];
}

- (NSString*)shortcutDescriptionForDefaultsKey:(NSString*)key {
  return [ShortcutFrom(StoredObject(key), key) description];
}

@end
