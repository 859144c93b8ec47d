#pragma once

#import <AppKit/NSPasteboard.h>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Cocoa/PasteboardTargets.h"
#include "Platform/Linux/SelectionServer.h"
#include "Utilities/Ref.h"

namespace tessaro::platform {

// What this process offers as the X server's clipboard. Main thread only, but for the answers to other programs.
class ClipboardOffer : public std::enable_shared_from_this<ClipboardOffer> {
 public:
  // Takes the clipboard. `owner`, which may be nil, provides what isn't set when somebody asks for it.
  [[nodiscard]] static std::shared_ptr<ClipboardOffer> Take(NSPasteboard* pasteboard, NSArray* types, id owner);

  // Whether another program has taken it since.
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
  void Answer(const std::string& target, const SelectionServer::Answer& answer);
  void AnswerFromOwner(const std::string& target, const SelectionServer::Answer& answer);
  [[nodiscard]] std::optional<SelectionServer::Contents> Known(const std::string& target);
  void AskOwner(NSString* type);
  void NoteListed();
  void Lose();

  Ref<NSPasteboard> pasteboard_;
  Ref<NSArray> types_;
  Ref<NSObject> owner_;
  Ref<NSMutableDictionary> values_;  // data by type

  bool isCurrent_ = true;

  std::mutex mutex_;
  std::condition_variable listed_;
  bool isListed_ = false;
  std::map<std::string, std::shared_ptr<const std::string>> contents_;  // by target
};

}  // namespace tessaro::platform
