#include "Platform/Linux/Cocoa/ClipboardOffer.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <chrono>
#include <utility>

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

ClipboardOffer::ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner)
    : pasteboard_(Retain(pasteboard)),
      types_(Adopt([[NSArray alloc] initWithArray:types copyItems:YES])),
      owner_(Retain(static_cast<NSObject*>(owner))),
      values_(Adopt([[NSMutableDictionary alloc] init])) {}

std::shared_ptr<ClipboardOffer> ClipboardOffer::Take(NSPasteboard* pasteboard, NSArray* types, id owner) {
  auto offer = std::make_shared<ClipboardOffer>(pasteboard, types, owner);
  const auto provide = [weak = std::weak_ptr(offer)](const std::string& target, const SelectionServer::Answer& answer) {
    const auto current = weak.lock();
    return current ? current->Answer(target, answer) : answer(std::nullopt);
  };
  const auto listed = [weak = std::weak_ptr(offer)] {
    if (const auto current = weak.lock()) current->NoteListed();
  };
  const auto lost = [weak = std::weak_ptr(offer)] {
    MainQueue::Shared().Post([weak] {
      if (const auto former = weak.lock()) former->Lose();
    });
  };
  if (!SelectionServer::Shared().Take(kClipboard, {TargetsOf(types), provide, listed, lost})) return nullptr;
  return offer;
}

bool ClipboardOffer::IsCurrent() const { return isCurrent_ && SelectionServer::Shared().Owns(kClipboard); }

void ClipboardOffer::NoteListed() {
  const std::lock_guard lock(mutex_);
  isListed_ = true;
  listed_.notify_all();
}

void ClipboardOffer::WaitUntilListed() {
  std::unique_lock lock(mutex_);
  listed_.wait_for(lock, kListingDeadline, [this] { return isListed_; });
}

void ClipboardOffer::Withdraw() {
  if (!IsCurrent()) return;
  isCurrent_ = false;
  SelectionServer::Shared().GiveUp(kClipboard);
}

bool ClipboardOffer::Set(NSString* type, NSData* data) {
  if (![types_ containsObject:type]) return false;
  TargetContents targets;
  if (data != nil) AddTargets(type, data, targets);
  [values_ setObject:data != nil ? [[data copy] autorelease] : [NSData data] forKey:type];
  const std::lock_guard lock(mutex_);
  for (auto& [target, bytes] : targets) contents_[target] = std::make_shared<const std::string>(std::move(bytes));
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

std::optional<SelectionServer::Contents> ClipboardOffer::Known(const std::string& target) {
  const std::lock_guard lock(mutex_);
  const auto found = contents_.find(target);
  if (found == contents_.end()) return std::nullopt;
  return SelectionServer::Contents{target, found->second};
}

void ClipboardOffer::Answer(const std::string& target, const SelectionServer::Answer& answer) {
  if (auto known = Known(target)) return answer(std::move(known));
  MainQueue::Shared().Post([self = shared_from_this(), target, answer] { self->AnswerFromOwner(target, answer); });
}

void ClipboardOffer::AnswerFromOwner(const std::string& target, const SelectionServer::Answer& answer) {
  for (NSString* type in types_.get()) {
    const std::vector<std::string> targets = TargetsOfType(type);
    const bool isOfType = std::find(targets.begin(), targets.end(), target) != targets.end();
    if (isOfType && [values_ objectForKey:type] == nil) AskOwner(type);
  }
  answer(Known(target));
}

void ClipboardOffer::Lose() {
  if (!std::exchange(isCurrent_, false)) return;
  if ([owner_ respondsToSelector:@selector(pasteboardChangedOwner:)]) [owner_ pasteboardChangedOwner:pasteboard_];
}

}  // namespace tessaro::platform
