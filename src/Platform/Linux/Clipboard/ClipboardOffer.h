#pragma once

#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>

#include <memory>
#include <string>

#include "Base/Ref.h"

namespace tessaro::platform {

constexpr char kClipboard[] = "CLIPBOARD";

// This process's clipboard contents. Main thread only: other programs are served from a copy, and the main
// thread is asked only for what that lacks.
class ClipboardOffer {
 public:
  // Takes the clipboard; null when the X server refuses. Without a display the offer is of use to this process alone.
  // `owner`, which may be nil, provides data that aren't set when they are first asked for.
  [[nodiscard]] static std::shared_ptr<ClipboardOffer> Take(NSPasteboard* pasteboard, NSArray* types, id owner);

  // Whether no other program has taken the clipboard since.
  [[nodiscard]] bool IsCurrent() const;

  [[nodiscard]] NSArray* types() const { return types_; }

  // False for a type that has not been declared.
  [[nodiscard]] bool Set(NSString* type, NSData* data);

  // Asks the owner for what is not set; nil when the owner has none either.
  [[nodiscard]] NSData* Get(NSString* type);

  ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner);

 private:
  class Copies;

  // Has the owner provide all types that give the target.
  void Provide(const std::string& target);
  void AskOwner(NSString* type);
  void Lose();

  Ref<NSPasteboard> pasteboard_;
  Ref<NSArray> types_;
  Ref<NSObject> owner_;
  Ref<NSMutableDictionary> values_;  // data by type
  std::shared_ptr<Copies> copies_;
  bool isCurrent_ = true;
};

}  // namespace tessaro::platform
