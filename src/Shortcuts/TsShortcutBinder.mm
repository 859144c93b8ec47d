#import "Shortcuts/TsShortcutBinder.h"

#include <optional>
#include <utility>

#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Cocoa.h"
#import "Shortcuts/MASShortcut.h"
#import "Shortcuts/TsShortcutValidator.h"
#include "Utilities/TsNotificationObserver.h"

using tessaro::platform::HotKeyRegistration;

namespace {

id StoredObject(NSString* defaultsKey) { return [[NSUserDefaults standardUserDefaults] objectForKey:defaultsKey]; }

MASShortcut* ShortcutFrom(id stored, NSString* defaultsKey) {
  if (stored == nil) return nil;
  NSError* error = nil;
  MASShortcut* shortcut = [NSKeyedUnarchiver unarchivedObjectOfClass:[MASShortcut class]
                                                            fromData:As<NSData>(stored)
                                                               error:&error];
  if (shortcut == nil) TsLogWarning(@"No shortcut is stored under %@: %@", defaultsKey, [error localizedDescription]);
  return shortcut;
}

}  // namespace

MASShortcut* TsStoredShortcut(NSString* defaultsKey) { return ShortcutFrom(StoredObject(defaultsKey), defaultsKey); }

// A key of the user defaults, the shortcut last read from it, and its registration.
class TsBoundShortcut {
 public:
  TsBoundShortcut(NSString* defaultsKey, std::function<void()> action)
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
  std::optional<HotKeyRegistration> registration_;
};

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
  auto& shortcut = _bound[TsStdString(key)];
  shortcut = std::make_unique<TsBoundShortcut>(key, std::move(action));
}

@end
