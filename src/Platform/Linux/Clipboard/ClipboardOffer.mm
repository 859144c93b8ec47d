#include "Platform/Linux/Clipboard/ClipboardOffer.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

std::vector<std::string> TargetsOf(NSArray* types) {
  std::vector<std::string> targets;
  for (NSString* type in types) {
    for (std::string& target : TargetsOfType(type)) {
      if (std::find(targets.begin(), targets.end(), target) == targets.end()) targets.push_back(std::move(target));
    }
  }
  return targets;
}

}  // namespace

// The data for other programs, by target; shared with the selections' thread.
class ClipboardOffer::Copies {
 public:
  void Set(const std::string& target, std::string bytes) {
    const std::lock_guard lock(mutex_);
    bytes_[target] = std::make_shared<const std::string>(std::move(bytes));
  }

  // Null if missing.
  [[nodiscard]] SelectionOffer::Bytes Get(const std::string& target) const {
    const std::lock_guard lock(mutex_);
    const auto found = bytes_.find(target);
    return found == bytes_.end() ? nullptr : found->second;
  }

 private:
  mutable std::mutex mutex_;
  std::map<std::string, SelectionOffer::Bytes> bytes_;
};

ClipboardOffer::ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner)
    : pasteboard_(Retain(pasteboard)),
      types_(Adopt([[NSArray alloc] initWithArray:types copyItems:YES])),
      owner_(Retain(static_cast<NSObject*>(owner))),
      values_(Adopt([[NSMutableDictionary alloc] init])),
      copies_(std::make_shared<Copies>()) {}

std::shared_ptr<ClipboardOffer> ClipboardOffer::Take(NSPasteboard* pasteboard, NSArray* types, id owner) {
  auto offer = std::make_shared<ClipboardOffer>(pasteboard, types, owner);
  if (!Selections::Shared().IsAvailable()) return offer;
  // Other threads get weak references: the offer's Cocoa objects must be released on the main thread.
  const auto onMainThread = [weak = std::weak_ptr(offer)](std::function<void(ClipboardOffer&)> task) {
    MainQueue::Shared().Post([weak, task = std::move(task)] {
      if (const auto current = weak.lock()) task(*current);
    });
  };
  const auto provide = [copies = offer->copies_, onMainThread](const std::string& target,
                                                               const SelectionOffer::Reply& reply) {
    if (auto bytes = copies->Get(target)) return reply(std::move(bytes));
    onMainThread([copies, target, reply](ClipboardOffer& current) {
      current.Provide(target);
      reply(copies->Get(target));
    });
  };
  const auto lost = [onMainThread] { onMainThread(&ClipboardOffer::Lose); };
  if (!Selections::Shared().Take(kClipboard, {TargetsOf(types), provide, lost})) return nullptr;
  return offer;
}

bool ClipboardOffer::IsCurrent() const {
  return isCurrent_ && (!Selections::Shared().IsAvailable() || Selections::Shared().Owns(kClipboard));
}

bool ClipboardOffer::Set(NSString* type, NSData* data) {
  if (![types_ containsObject:type]) return false;
  TargetContents targets;
  if (data != nil) AddTargets(type, data, targets);
  auto value = Adopt(data != nil ? static_cast<NSData*>([data copy]) : [[NSData alloc] init]);
  [values_ setObject:value forKey:type];
  for (auto& [target, bytes] : targets) copies_->Set(target, std::move(bytes));
  return true;
}

NSData* ClipboardOffer::Get(NSString* type) {
  if ([values_ objectForKey:type] == nil && [types_ containsObject:type]) AskOwner(type);
  return [values_ objectForKey:type];
}

void ClipboardOffer::AskOwner(NSString* type) {
  if ([owner_ respondsToSelector:@selector(pasteboard:provideDataForType:)]) {
    [owner_ pasteboard:pasteboard_ provideDataForType:type];
  }
}

void ClipboardOffer::Provide(const std::string& target) {
  for (NSString* type in types_.get()) {
    const std::vector<std::string> targets = TargetsOfType(type);
    const bool isOfType = std::find(targets.begin(), targets.end(), target) != targets.end();
    if (isOfType && [values_ objectForKey:type] == nil) AskOwner(type);
  }
}

void ClipboardOffer::Lose() {
  if (!std::exchange(isCurrent_, false)) return;
  if ([owner_ respondsToSelector:@selector(pasteboardChangedOwner:)]) [owner_ pasteboardChangedOwner:pasteboard_];
}

}  // namespace tessaro::platform
