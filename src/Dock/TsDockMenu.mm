#import "Dock/TsDockMenu.h"

#import <objc/runtime.h>

#include "Base/TsLog.h"
#include "Platform/DockMenu.h"
#import "StatusItem/TsStatusItemController.h"

namespace {

constexpr char kActionTypes[] = "V@:@";
constexpr char kMenuTypes[] = "@@:@";

template <void (*perform)(id sender)>
void Action(id, SEL, id sender) {
  perform(sender);
}

id ApplicationDockMenu(id delegate, SEL, id sender) { return TsDockMenu(delegate, sender); }

template <typename Function>
IMP Implementation(Function function) {
  return reinterpret_cast<IMP>(function);
}

// class_replaceMethod() alone would change the superclass for an inherited method.
void Replace(Class target, SEL selector, IMP implementation, const char* types) {
  if (class_addMethod(target, selector, implementation, types)) return;
  class_replaceMethod(target, selector, implementation, types);
}

}  // namespace

void TsInstallDockMenuPatch() {
  Class delegateClass = [[NSApp delegate] class];
  if (delegateClass == Nil) return TsLogError(@"Cannot patch as I didn't find application class");
  class_addMethod(delegateClass, @selector(ts_checkForNewMessages:), Implementation(Action<TsCheckForNewMessages>),
                  kActionTypes);
  class_addMethod(delegateClass, @selector(ts_toggleDoNotDisturb:), Implementation(Action<TsToogleDoNotDisturb>),
                  kActionTypes);
  class_addMethod(delegateClass, @selector(ts_composeNewMessage:), Implementation(Action<TsComposeNewMessage>),
                  kActionTypes);
  Replace(delegateClass, @selector(applicationDockMenu:), Implementation(ApplicationDockMenu), kMenuTypes);

  tessaro::platform::OfferDockMenu();
}

NSMenu* TsDockMenu(id, id) {
  auto menu = Adopt([[NSMenu alloc] init]);
  [[TsStatusItemController sharedInstance] menuNeedsUpdate:menu type:@"dock" includeMessage:NO];
  return menu.Autoreleased();
}

void TsCheckForNewMessages(id sender) { [[TsStatusItemController sharedInstance] checkForNewMessages:sender]; }

void TsToogleDoNotDisturb(id sender) { [[TsStatusItemController sharedInstance] toggleDoNotDisturb:sender]; }

void TsComposeNewMessage(id sender) { [[TsStatusItemController sharedInstance] composeNewMessage:sender]; }
