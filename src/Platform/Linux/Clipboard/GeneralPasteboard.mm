#import <AppKit/AppKit.h>

#include <cstdlib>
#include <memory>

#include "Base/Lifetime.h"
#include "Platform/Linux/Clipboard/ClipboardOffer.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/Selections.h"

namespace platform = tessaro::platform;

namespace {

constexpr platform::SelectionLimits kLimits;

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
  std::shared_ptr<platform::ClipboardOffer> _offer;  // null once another program has the clipboard
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

- (platform::ClipboardOffer*)offer {
  if (_offer && !_offer->IsCurrent()) _offer = nullptr;
  return _offer.get();
}

- (int)declareTypes:(NSArray*)types owner:(id)provider {
  _offer = platform::ClipboardOffer::Take(self, types, provider);
  return 1;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  return [self offer] != nullptr && [self offer]->Set(type, data);
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  if (IsPropertyList(type)) return [super setString:string forType:type];
  return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (NSArray*)types {
  if ([self offer] != nullptr) return [self offer]->types();
  const auto types = platform::ForeignTypes(platform::kClipboard, kLimits);
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
  if ([self offer] != nullptr) return [self offer]->Get(type);
  const auto data = platform::ForeignData(platform::kClipboard, type, kLimits);
  if (!data) RaiseNoAnswer(data.error());
  return Retain(data->get()).Autoreleased();
}

- (NSString*)stringForType:(NSString*)type {
  return IsPropertyList(type) ? [super stringForType:type] : platform::TextOfData([self dataForType:type]);
}

- (id)propertyListForType:(NSString*)type {
  return IsText(type) ? [self stringForType:type] : [super propertyListForType:type];
}

- (BOOL)setPropertyList:(id)value forType:(NSString*)type {
  return IsText(type) ? [self setString:value forType:type] : [super setPropertyList:value forType:type];
}

// The clipboard's contents end with their owner, unless a clipboard manager fetches them now.
- (void)saveContents {
  if ([self offer] == nullptr || !platform::Selections::Shared().IsAvailable()) return;
  static_cast<void>(platform::Selections::Shared().Read("CLIPBOARD_MANAGER", "SAVE_TARGETS", kLimits));
}

@end

// The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSPasteboard (GeneralPasteboard)
@end

@implementation NSPasteboard (GeneralPasteboard)

+ (NSPasteboard*)generalPasteboard {
  return [TsGeneralPasteboard shared];
}

@end
