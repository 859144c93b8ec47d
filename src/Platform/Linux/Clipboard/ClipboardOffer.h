#pragma once

#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>

#include <memory>
#include <string>

#include "Base/Ref.h"

namespace tessaro::platform {

constexpr char kClipboard[] = "CLIPBOARD";

// This process's clipboard contents. Main thread only: other programs read a copy, and wait for the main thread only
// for targets that the copy lacks.
class ClipboardOffer {
 public:
  // Takes the clipboard; null when the X server refuses. Without a display the offer is of use to this process alone.
  // `owner`, which may be nil, provides the data of a type when another program first requests them.
  [[nodiscard]] static std::shared_ptr<ClipboardOffer> Take(NSPasteboard* pasteboard, NSArray* types, id owner);

  // Whether no other program has taken the clipboard since.
  [[nodiscard]] bool IsCurrent() const;

  [[nodiscard]] NSArray* types() const { return types_; }

  // False for a type that has not been declared.
  [[nodiscard]] bool Set(NSString* type, NSData* data);

  // Requests data that are not set from the owner; nil when the owner has none either.
  [[nodiscard]] NSData* Get(NSString* type);

  ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner);

 private:
  class Copies;

  // Requests all types of the target from the owner.
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
