#pragma once

#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>

#include <memory>
#include <string>

#include "Base/Ref.h"

namespace tessaro::platform {

// What this process offers as the X server's clipboard. Main thread only: other programs are answered from a copy, and
// what that lacks is asked for here.
class ClipboardOffer {
 public:
  // Takes the clipboard; nothing without a display. `owner`, which may be nil, provides what isn't set when somebody
  // asks for it.
  [[nodiscard]] static std::shared_ptr<ClipboardOffer> Take(NSPasteboard* pasteboard, NSArray* types, id owner);

  // Whether no other program has taken it since.
  [[nodiscard]] bool IsCurrent() const;

  // Waits until another program has asked what there is, for half a second at most.
  void WaitUntilListed();

  // Gives the clipboard up, if this is it still.
  void Withdraw();

  [[nodiscard]] NSArray* types() const { return types_; }

  // False for a type that has not been declared.
  [[nodiscard]] bool Set(NSString* type, NSData* data);

  // Asks the owner where it must; nil when nobody has any.
  [[nodiscard]] NSData* Get(NSString* type);

  ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner);

 private:
  class Copy;

  // Has the owner provide all that gives the target.
  void Provide(const std::string& target);
  void AskOwner(NSString* type);
  void Lose();

  Ref<NSPasteboard> pasteboard_;
  Ref<NSArray> types_;
  Ref<NSObject> owner_;
  Ref<NSMutableDictionary> values_;  // data by type
  std::shared_ptr<Copy> copy_;
  bool isCurrent_ = true;
};

}  // namespace tessaro::platform
