#import "Platform/Linux/Clipboard/GeneralPasteboard.h"

#import <AppKit/AppKit.h>
#import <objc/runtime.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/AppKit/NSPasteboard+Items.h"
#include "Platform/Linux/Clipboard/ClipboardOffer.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#include "Platform/Linux/Clipboard/SelectionReader.h"

namespace platform = tessaro::platform;

namespace {

// For all values together. The pasteboard server takes a second for ten times as much, and a single message of more
// than 32 MiB would end the connection.
constexpr NSUInteger kMostInServer = 1 << 20;
constexpr NSUInteger kLargestMessage = 31 << 20;

// What the server of GNUstep answers about itself, as hardly any other program does.
constexpr char kOnlyServersTarget[] = "OWNER_OS";

// The clipboard as another program has it.
class ForeignClipboard {
 public:
  [[nodiscard]] bool IsAvailable() const { return static_cast<bool>(connection_); }

  [[nodiscard]] xcb_window_t Owner() { return connection_.OwnerOf(clipboard_); }

  // The owner's targets; nothing when it doesn't answer.
  [[nodiscard]] std::optional<std::vector<std::string>> Targets() { return reader_.Targets(clipboard_); }

  [[nodiscard]] platform::SelectionReader::Result Read(const std::string& target) {
    return reader_.Read(clipboard_, connection_.Atom(target));
  }

  // Its window stays the same for its whole life.
  void NoteServer() { server_ = IsAvailable() ? Owner() : static_cast<xcb_window_t>(XCB_NONE); }
  [[nodiscard]] bool IsServer(xcb_window_t window) const { return window == server_; }

 private:
  platform::XConnection connection_;
  platform::SelectionReader reader_{connection_};
  xcb_atom_t clipboard_ = connection_ ? connection_.Atom("CLIPBOARD") : static_cast<xcb_atom_t>(XCB_NONE);
  xcb_window_t server_ = XCB_NONE;
};

enum class Holder { kServer, kOurselves, kOtherProgram };

// The process's share in the clipboard.
struct Clipboard {
  ForeignClipboard foreign;
  std::shared_ptr<platform::ClipboardOffer> offer;
  bool isTakenFromServer = false;
  Ref<NSObject> owner;      // who has declared the types that the server keeps, if it was somebody here
  NSUInteger inServer = 0;  // bytes, since then

  static Clipboard& Shared() {
    static auto& clipboard = *new Clipboard();
    return clipboard;
  }
};

[[noreturn]] void RaiseNoAnswer() {
  [NSException raise:NSPasteboardCommunicationException format:@"The program that has the clipboard does not answer"];
  std::abort();
}

// `targets` are the other program's, where it is one.
Holder HolderAndTargets(std::vector<std::string>& targets) {
  Clipboard& clipboard = Clipboard::Shared();
  if (clipboard.offer && clipboard.offer->IsCurrent()) return Holder::kOurselves;
  clipboard.offer = nullptr;
  if (!clipboard.foreign.IsAvailable()) return Holder::kServer;
  const xcb_window_t owner = clipboard.foreign.Owner();
  if (owner == XCB_NONE || clipboard.foreign.IsServer(owner)) return Holder::kServer;
  auto offered = clipboard.foreign.Targets();
  if (!offered) RaiseNoAnswer();
  targets = *std::move(offered);
  if (std::find(targets.begin(), targets.end(), kOnlyServersTarget) == targets.end()) return Holder::kOtherProgram;
  clipboard.foreign.NoteServer();
  return Holder::kServer;
}

Holder CurrentHolder() {
  std::vector<std::string> targets;
  return HolderAndTargets(targets);
}

// The data of a type, from the first of its targets that the program has.
NSData* Fetch(NSString* type) {
  ForeignClipboard& foreign = Clipboard::Shared().foreign;
  for (const std::string& target : platform::TargetsOfType(type)) {
    const auto result = foreign.Read(target);
    if (result.failure == platform::SelectionReader::Failure::kNoAnswer) RaiseNoAnswer();
    if (result.failure == platform::SelectionReader::Failure::kRefused) continue;
    if (NSData* data = platform::DataOfTarget(type, target, result.bytes)) return data;
  }
  return nil;
}

bool IsWithServer() {
  ForeignClipboard& foreign = Clipboard::Shared().foreign;
  if (!foreign.IsAvailable()) return true;
  @try {
    return foreign.Owner() != XCB_NONE && CurrentHolder() == Holder::kServer;
  } @catch (NSException*) {
    return false;
  }
}

void Offer(NSPasteboard* pasteboard, NSArray* types, id owner) {
  Clipboard& clipboard = Clipboard::Shared();
  const bool isTakenFromServer = clipboard.offer ? clipboard.isTakenFromServer : IsWithServer();
  clipboard.offer = platform::ClipboardOffer::Take(pasteboard, types, owner);
  clipboard.isTakenFromServer = isTakenFromServer;
}

// The server asks whoever has taken the clipboard from it what there is. If it has got the clipboard back by then it
// asks itself, and loses what it has while it waits for the answer.
void LeaveToServer() {
  Clipboard& clipboard = Clipboard::Shared();
  if (!clipboard.offer) return;
  if (clipboard.isTakenFromServer && clipboard.offer->IsCurrent()) clipboard.offer->WaitUntilListed();
  clipboard.offer->Withdraw();
  clipboard.offer = nullptr;
}

bool AreForOtherPrograms(NSArray* types) {
  for (NSString* type in types) {
    if (platform::IsForOtherPrograms(type)) return true;
  }
  return false;
}

// Other programs have their texts as they are; GNUstep has some in a form of its own.
bool IsInGNUstepsForm(NSString* type) {
  return [@[ NSStringPboardType, NSFilenamesPboardType, NSURLPboardType ] containsObject:type];
}

NSString* Text(NSData* data) {
  if (data == nil) return nil;
  return Adopt([[NSString alloc] initWithData:data encoding:NSUTF8StringEncoding]).Autoreleased();
}

}  // namespace

@implementation TsGeneralPasteboard

- (NSArray*)types {
  std::vector<std::string> targets;
  switch (HolderAndTargets(targets)) {
    case Holder::kServer:
      return [super types];
    case Holder::kOurselves:
      return Clipboard::Shared().offer->types();
    case Holder::kOtherProgram:
      return platform::TypesOfTargets(targets);
  }
}

- (NSString*)availableTypeFromArray:(NSArray*)wanted {
  NSArray* types = [self types];
  const NSUInteger count = [types count];
  for (NSString* type in wanted) {
    for (NSUInteger i = 0; i < count; ++i) {
      if ([[types objectAtIndex:i] isEqualToString:type]) return type;
    }
  }
  return nil;
}

- (NSData*)dataForType:(NSString*)type {
  switch (CurrentHolder()) {
    case Holder::kServer:
      return [super dataForType:type];
    case Holder::kOurselves:
      return Clipboard::Shared().offer->Get(type);
    case Holder::kOtherProgram:
      return Fetch(type);
  }
}

- (NSString*)stringForType:(NSString*)type {
  if (IsInGNUstepsForm(type) || CurrentHolder() == Holder::kServer) return [super stringForType:type];
  return Text([self dataForType:type]);
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
  if (IsInGNUstepsForm(type) || CurrentHolder() != Holder::kOurselves) return [super setString:string forType:type];
  return [self setData:[string dataUsingEncoding:NSUTF8StringEncoding] forType:type];
}

- (int)declareTypes:(NSArray*)types owner:(id)provider {
  Clipboard& clipboard = Clipboard::Shared();
  if (AreForOtherPrograms(types)) {
    Offer(self, types, provider);
    if (clipboard.offer) return 1;
  }
  LeaveToServer();
  clipboard.owner = Retain(static_cast<NSObject*>(provider));
  clipboard.inServer = 0;
  const int change = [super declareTypes:types owner:provider];
  clipboard.foreign.NoteServer();
  return change;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
  Clipboard& clipboard = Clipboard::Shared();
  if (!clipboard.offer && clipboard.inServer + [data length] > kMostInServer) [self takeOverFromServer];
  if (clipboard.offer) return clipboard.offer->IsCurrent() && clipboard.offer->Set(type, data);
  clipboard.inServer += [data length];
  return [data length] <= kLargestMessage && [super setData:data forType:type];
}

// What the server already has moves to this process, with what will be provided later.
- (void)takeOverFromServer {
  if (CurrentHolder() != Holder::kServer) return;
  Clipboard& clipboard = Clipboard::Shared();
  NSMutableArray* types = [NSMutableArray array];
  NSMutableDictionary* values = [NSMutableDictionary dictionary];
  NSArray* remote = [super types];
  for (NSUInteger i = 0; i < [remote count]; ++i) {
    NSString* type = [remote objectAtIndex:i];
    [types addObject:type];
    NSData* value = clipboard.owner ? nil : [super dataForType:type];
    if (value != nil) [values setObject:value forKey:type];
  }
  Offer(self, types, clipboard.owner.get());
  if (!clipboard.offer) return;
  for (NSString* type in values) static_cast<void>(clipboard.offer->Set(type, [values objectForKey:type]));
}

@end

// The pasteboard server may hang, as while it waits for another program's data. It takes some seconds for
// the largest values too.
static const NSTimeInterval kServerDeadline = 10;

@interface NSPasteboard (TsPrivate)
- (id)_target;
@end

static void SetDeadline(NSPasteboard* pasteboard) {
  id remote = [pasteboard _target];
  if (![remote isProxy]) return;
  NSConnection* connection = [static_cast<NSDistantObject*>(remote) connectionForProxy];
  [connection setRequestTimeout:kServerDeadline];
  [connection setReplyTimeout:kServerDeadline];
}

// The run time takes a category's method before the class's own.
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

@interface NSPasteboard (GeneralPasteboard)
@end

@implementation NSPasteboard (GeneralPasteboard)

+ (NSPasteboard*)generalPasteboard {
  // GNUstep knows the object without owning it, and would let it go with the clipboard that it offers.
  auto pasteboard = Retain([self pasteboardWithName:NSGeneralPboard]);
  // There is one object for each name, whoever has asked for it first.
  if (object_getClass(pasteboard) == [NSPasteboard class]) {
    object_setClass(pasteboard, [TsGeneralPasteboard class]);
    SetDeadline(pasteboard);
  }
  return pasteboard.Autoreleased();
}

@end
