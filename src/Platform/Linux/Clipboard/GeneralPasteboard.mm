#import <AppKit/AppKit.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/MainQueue.h"

using namespace tessaro::platform;

namespace {

constexpr char kClipboard[] = "CLIPBOARD";

std::vector<std::string> TargetsOf(NSArray* types) {
  std::vector<std::string> targets;
  for (NSString* type in types) {
    for (std::string& target : TargetsOfType(type)) {
      if (std::find(targets.begin(), targets.end(), target) == targets.end()) targets.push_back(std::move(target));
    }
  }
  return targets;
}

// The data for other programs, by target; shared with the selections' thread.
class TargetCopies {
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

// This process's clipboard contents. Main thread only: other programs read a copy, and wait for the main thread only
// for targets that the copy lacks.
class ClipboardOffer {
 public:
  // Takes the clipboard; null when the X server refuses. Without a display the offer is of use to this process alone.
  // `owner`, which may be nil, provides the data of a type at the first request for them.
  [[nodiscard]] static std::shared_ptr<ClipboardOffer> Take(NSPasteboard* pasteboard, NSArray* types, id owner) {
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

  // Whether no other program has taken the clipboard since.
  [[nodiscard]] bool IsCurrent() const {
    return isCurrent_ && (!Selections::Shared().IsAvailable() || Selections::Shared().Owns(kClipboard));
  }

  [[nodiscard]] NSArray* types() const { return types_; }

  // False for a type that has not been declared.
  [[nodiscard]] bool Set(NSString* type, NSData* data) {
    if (![types_ containsObject:type]) return false;
    TargetContents targets;
    if (data != nil) AddTargets(type, data, targets);
    auto value = Adopt(data != nil ? static_cast<NSData*>([data copy]) : [[NSData alloc] init]);
    [values_ setObject:value forKey:type];
    for (auto& [target, bytes] : targets) copies_->Set(target, std::move(bytes));
    return true;
  }

  // Requests data that are not set from the owner; nil when the owner has none either.
  [[nodiscard]] NSData* Get(NSString* type) {
    if ([values_ objectForKey:type] == nil && [types_ containsObject:type]) AskOwner(type);
    return [values_ objectForKey:type];
  }

  ClipboardOffer(NSPasteboard* pasteboard, NSArray* types, id owner)
      : pasteboard_(Retain(pasteboard)),
        types_(Adopt([[NSArray alloc] initWithArray:types copyItems:YES])),
        owner_(Retain(static_cast<NSObject*>(owner))),
        values_(Adopt([[NSMutableDictionary alloc] init])),
        copies_(std::make_shared<TargetCopies>()) {}

 private:
  // Requests all types of the target from the owner.
  void Provide(const std::string& target) {
    for (NSString* type in types_.get()) {
      const std::vector<std::string> targets = TargetsOfType(type);
      const bool isOfType = std::find(targets.begin(), targets.end(), target) != targets.end();
      if (isOfType && [values_ objectForKey:type] == nil) AskOwner(type);
    }
  }

  void AskOwner(NSString* type) {
    if ([owner_ respondsToSelector:@selector(pasteboard:provideDataForType:)]) {
      [owner_ pasteboard:pasteboard_ provideDataForType:type];
    }
  }

  void Lose() {
    if (!std::exchange(isCurrent_, false)) return;
    if ([owner_ respondsToSelector:@selector(pasteboardChangedOwner:)]) [owner_ pasteboardChangedOwner:pasteboard_];
  }

  Ref<NSPasteboard> pasteboard_;
  Ref<NSArray> types_;
  Ref<NSObject> owner_;
  Ref<NSMutableDictionary> values_;  // data by type
  std::shared_ptr<TargetCopies> copies_;
  bool isCurrent_ = true;
};

// ---- The pasteboard

constexpr SelectionLimits kLimits;

[[noreturn]] void RaiseNoAnswer(const Failure& failure) {
  [NSException raise:NSPasteboardCommunicationException format:@"The clipboard: %s", failure.message.c_str()];
  std::abort();
}

bool IsText(NSString* type) { return [type isEqualToString:NSStringPboardType]; }

// GNUstep serialises these types as property lists.
bool IsPropertyList(NSString* type) {
  return [type isEqualToString:NSFilenamesPboardType] || [type isEqualToString:NSURLPboardType];
}

}  // namespace

// The general pasteboard of this process: the X server's clipboard. The process serves its own contents to other
// programs while it runs, and hands them to a clipboard manager at its end. Contents of another program are fetched
// from that program, type by type and only on request. Without a display the pasteboard is private to this process.
//
// Data of texts are UTF-8, unchanged from the other program. A program that doesn't answer in time raises
// NSPasteboardCommunicationException.
@interface TsGeneralPasteboard : NSPasteboard {
  std::shared_ptr<ClipboardOffer> _offer;  // null once another program has the clipboard
}
@end

@implementation TsGeneralPasteboard

+ (TsGeneralPasteboard*)shared {
  static Forever<Ref<TsGeneralPasteboard>> pasteboard(Adopt([[TsGeneralPasteboard alloc] init]));
  return pasteboard->get();
}

- (instancetype)init {
  self = [super init];
  if (self) AtEnd(EndStage::Services, [self] { [self saveContents]; });
  return self;
}

- (NSString*)name {
  return NSGeneralPboard;
}

// Ask once in a method: another program may take the clipboard at any time.
- (std::shared_ptr<ClipboardOffer>)offer {
  if (_offer && !_offer->IsCurrent()) _offer = nullptr;
  return _offer;
}

- (int)declareTypes:(NSArray*)types owner:(id)provider {
  _offer = ClipboardOffer::Take(self, types, provider);
  return 1;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  const auto offer = [self offer];
  return offer != nullptr && offer->Set(type, data);
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  if (IsPropertyList(type)) return [super setString:string forType:type];
  return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (NSArray*)types {
  if (const auto offer = [self offer]) return offer->types();
  const auto types = ForeignTypes(kClipboard, kLimits);
  if (!types) RaiseNoAnswer(types.error());
  return Retain(types->get()).Autoreleased();
}

- (NSString*)availableTypeFromArray:(NSArray*)wanted {
  NSArray* types = [self types];
  for (NSString* type in wanted) {
    if ([types containsObject:type]) return type;
  }
  return nil;
}

- (NSData*)dataForType:(NSString*)type {
  if (const auto offer = [self offer]) return offer->Get(type);
  const auto data = ForeignData(kClipboard, type, kLimits);
  if (!data) RaiseNoAnswer(data.error());
  return Retain(data->get()).Autoreleased();
}

- (NSString*)stringForType:(NSString*)type {
  return IsPropertyList(type) ? [super stringForType:type] : TextOfData([self dataForType:type]);
}

- (id)propertyListForType:(NSString*)type {
  return IsText(type) ? [self stringForType:type] : [super propertyListForType:type];
}

- (BOOL)setPropertyList:(id)value forType:(NSString*)type {
  return IsText(type) ? [self setString:value forType:type] : [super setPropertyList:value forType:type];
}

// The clipboard's contents end with their owner, unless a clipboard manager fetches them now.
- (void)saveContents {
  if ([self offer] == nullptr || !Selections::Shared().IsAvailable()) return;
  static_cast<void>(Selections::Shared().Read("CLIPBOARD_MANAGER", "SAVE_TARGETS", kLimits));
}

@end

@interface NSPasteboard (GeneralPasteboard)
@end

@implementation NSPasteboard (GeneralPasteboard)

+ (NSPasteboard*)generalPasteboard {
  return [TsGeneralPasteboard shared];
}

@end
