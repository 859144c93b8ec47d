#include "Platform/Linux/Clipboard/ClipboardOffer.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/SelectionServer.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr char kClipboard[] = "CLIPBOARD";
constexpr auto kListingDeadline = std::chrono::milliseconds(500);

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

// What other programs get, on the selection server's thread.
class ClipboardOffer::Copy {
 public:
  void Set(const std::string& target, std::string bytes) {
    const std::lock_guard lock(mutex_);
    contents_[target] = std::make_shared<const std::string>(std::move(bytes));
  }

  [[nodiscard]] std::optional<SelectionServer::Contents> Get(const std::string& target) const {
    const std::lock_guard lock(mutex_);
    const auto found = contents_.find(target);
    if (found == contents_.end()) return std::nullopt;
    return SelectionServer::Contents{target, found->second};
  }

  void NoteListed() {
    const std::lock_guard lock(mutex_);
    isListed_ = true;
    listed_.notify_all();
  }

  void WaitUntilListed() {
    std::unique_lock lock(mutex_);
    listed_.wait_for(lock, kListingDeadline, [this] { return isListed_; });
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable listed_;
  bool isListed_ = false;
  std::map<std::string, std::shared_ptr<const std::string>> contents_;  // by target
};

ClipboardOffer::ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner)
    : pasteboard_(Retain(pasteboard)),
      types_(Adopt([[NSArray alloc] initWithArray:types copyItems:YES])),
      owner_(Retain(static_cast<NSObject*>(owner))),
      values_(Adopt([[NSMutableDictionary alloc] init])),
      copy_(std::make_shared<Copy>()) {}

std::shared_ptr<ClipboardOffer> ClipboardOffer::Take(NSPasteboard* pasteboard, NSArray* types, id owner) {
  auto offer = std::make_shared<ClipboardOffer>(pasteboard, types, owner);
  // Only the main thread may hold the offer itself: its end is the end of Cocoa's objects.
  const auto onMainThread = [weak = std::weak_ptr(offer)](std::function<void(ClipboardOffer&)> task) {
    MainQueue::Shared().Post([weak, task = std::move(task)] {
      if (const auto current = weak.lock()) task(*current);
    });
  };
  const auto provide = [copy = offer->copy_, onMainThread](const std::string& target,
                                                           const SelectionServer::Answer& answer) {
    if (auto contents = copy->Get(target)) return answer(std::move(contents));
    onMainThread([copy, target, answer](ClipboardOffer& current) {
      current.Provide(target);
      answer(copy->Get(target));
    });
  };
  const auto listed = [copy = offer->copy_] { copy->NoteListed(); };
  const auto lost = [onMainThread] { onMainThread(&ClipboardOffer::Lose); };
  if (!SelectionServer::Shared().Take(kClipboard, {TargetsOf(types), provide, listed, lost})) return nullptr;
  return offer;
}

bool ClipboardOffer::IsCurrent() const { return isCurrent_ && SelectionServer::Shared().Owns(kClipboard); }

void ClipboardOffer::WaitUntilListed() { copy_->WaitUntilListed(); }

void ClipboardOffer::Withdraw() {
  if (!IsCurrent()) return;
  isCurrent_ = false;
  SelectionServer::Shared().GiveUp(kClipboard);
}

bool ClipboardOffer::Set(NSString* type, NSData* data) {
  if (![types_ containsObject:type]) return false;
  TargetContents targets;
  if (data != nil) AddTargets(type, data, targets);
  auto value = Adopt(data != nil ? static_cast<NSData*>([data copy]) : [[NSData alloc] init]);
  [values_ setObject:value forKey:type];
  for (auto& [target, bytes] : targets) copy_->Set(target, std::move(bytes));
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
