#include "Platform/Linux/Clipboard/PasteboardTargets.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Platform/Common/PropertyLists.h"
#include "Platform/Linux/Clipboard/Selections.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr char kURIList[] = "text/uri-list";
constexpr char kLatin1Text[] = "STRING";
constexpr char kPageAddress[] = "text/x-moz-url";  // with its title, in UTF-16

// Parsing more would hold the main thread for seconds.
constexpr std::size_t kMostURLs = 20000;

constexpr std::array<std::string_view, 6> kTextTargets = {
    "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", kLatin1Text, "TEXT", "COMPOUND_TEXT",
};

// Targets about the selection itself, not its contents.
constexpr std::array<std::string_view, 12> kNoContents = {
    "TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "DELETE",        "INSERT_SELECTION",
    "USER",    "HOST_NAME", "HOSTNAME", "OWNER_OS",     "CLIENT_WINDOW", "INSERT_PROPERTY",
};

struct TypeAndTarget {
  NSString* type;
  const char* target;
};

// The first of several types for one target is its type on a pasteboard.
const std::array<TypeAndTarget, 12> kTable = {{
    {@"public.html", "text/html"},
    {@"NSHTMLPboardType", "text/html"},
    {@"public.png", "image/png"},
    {@"public.jpeg", "image/jpeg"},
    {@"public.jpg", "image/jpeg"},
    {@"public.gif", "image/gif"},
    {@"NSTIFFPboardType", "image/tiff"},
    {@"public.tiff", "image/tiff"},
    {@"NSRTFPboardType", "text/rtf"},
    {@"NSRTFPboardType", "application/rtf"},
    {@"NSRTFPboardType", "text/richtext"},
    {@"public.rtf", "text/rtf"},
}};

template <std::size_t size>
bool Contains(const std::array<std::string_view, size>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

NSString* Decoded(std::string_view bytes, NSStringEncoding encoding) {
  return Adopt([[NSString alloc] initWithBytes:bytes.data() length:bytes.size() encoding:encoding]).Autoreleased();
}

std::string Bytes(NSData* data) { return {static_cast<const char*>([data bytes]), [data length]}; }

std::string UTF8(NSString* text) { return Bytes([text dataUsingEncoding:NSUTF8StringEncoding]); }

NSData* Serialized(id propertyList) {
  return propertyList == nil ? nil : [NSSerializer serializePropertyList:propertyList];
}

template <typename Kind>
Kind* Deserialized(NSData* data) {
  if (!IsSoundSerialization(Bytes(data))) return nil;
  @try {
    return As<Kind>([NSDeserializer deserializePropertyListFromData:data mutableContainers:NO]);
  } @catch (NSException*) {
    return nil;
  }
}

// Other programs' lists may hold objects of any class.
NSArray* StringsOf(id value) {
  NSMutableArray* strings = [NSMutableArray array];
  for (id each in As<NSArray>(value)) {
    if (NSString* string = As<NSString>(each)) [strings addObject:string];
  }
  return strings;
}

// ---- Texts

bool IsLatin1(std::string_view target) { return target == kLatin1Text || target == "TEXT"; }

// The bytes should be UTF-8, but may be malformed.
void AddText(NSData* data, TargetContents& contents) {
  const std::string utf8 = Bytes(data);
  for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"}) contents.emplace(target, utf8);
  NSData* latin1 = [Decoded(utf8, NSUTF8StringEncoding) dataUsingEncoding:NSISOLatin1StringEncoding];
  if (latin1 != nil) contents.emplace(kLatin1Text, Bytes(latin1));
}

// ---- Addresses and files

void AddURIs(NSArray* uris, TargetContents& contents) {
  std::string list;
  for (NSString* uri in uris) list += UTF8(uri) + "\r\n";
  if (!list.empty()) contents.emplace(kURIList, std::move(list));
}

void AddFiles(NSArray* paths, TargetContents& contents) {
  NSMutableArray* uris = [NSMutableArray array];
  for (NSString* path in paths) [uris addObject:[[NSURL fileURLWithPath:path] absoluteString]];
  AddURIs(uris, contents);
}

void AddPageAddresses(NSArray* urlsAndTitles, TargetContents& contents) {
  if ([urlsAndTitles count] != 2) return;
  NSArray* urls = StringsOf([urlsAndTitles objectAtIndex:0]);
  NSArray* titles = StringsOf([urlsAndTitles objectAtIndex:1]);
  NSMutableArray* lines = [NSMutableArray array];
  for (NSUInteger i = 0; i < [urls count]; ++i) {
    [lines addObject:[urls objectAtIndex:i]];
    [lines addObject:i < [titles count] ? [titles objectAtIndex:i] : @""];
  }
  NSString* text = [lines componentsJoinedByString:@"\n"];
  contents.emplace(kPageAddress, Bytes([text dataUsingEncoding:NSUTF16LittleEndianStringEncoding]));
  AddURIs(urls, contents);
}

NSURL* URLOfLine(std::string_view line) {
  NSCharacterSet* space = [NSCharacterSet whitespaceAndNewlineCharacterSet];
  NSString* text = [Decoded(line, NSUTF8StringEncoding) stringByTrimmingCharactersInSet:space];
  return text != nil ? [NSURL URLWithString:text] : nil;
}

NSArray* URLsOfList(std::string_view list) {
  NSMutableArray* urls = [NSMutableArray array];
  for (std::size_t lines = 0; !list.empty();) {
    const std::string_view line = list.substr(0, list.find('\n'));
    list.remove_prefix(std::min(line.size() + 1, list.size()));
    if (line.starts_with('#')) continue;
    if (++lines > kMostURLs) {
      TsLogWarning(@"Only the first %zu addresses of a list are used", kMostURLs);
      break;
    }
    if (NSURL* url = URLOfLine(line)) [urls addObject:url];
  }
  return urls;
}

bool IsOfThisMachine(NSURL* url) {
  NSString* host = [url host];
  const bool isLocal = [host length] == 0 || [host isEqualToString:@"localhost"];
  return [url isFileURL] && isLocal && [[url path] isAbsolutePath];
}

NSArray* FilesOfURIList(const std::string& list) {
  NSMutableArray* paths = [NSMutableArray array];
  for (NSURL* url in URLsOfList(list)) {
    if (IsOfThisMachine(url)) [paths addObject:[url path]];
  }
  return [paths count] > 0 ? paths : nil;
}

// ---- Other programs

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// All reads in one turn of the event loop share one limit: a program could answer each of a thousand just in time.
class TurnTime {
 public:
  static TurnTime& Shared() {
    static Forever<TurnTime> time;
    return *time;
  }

  template <typename Read>
  auto Spend(SelectionLimits limits, const Read& read) -> decltype(read(limits)) {
    limits.whole -= Spent();
    if (limits.whole <= milliseconds()) return Fail(kNoAnswer, "other programs have taken too long");
    limits.answer = std::min(limits.answer, limits.whole);
    const auto start = Clock::now();
    auto result = read(limits);
    spent_ += std::chrono::ceil<milliseconds>(Clock::now() - start);
    return result;
  }

 private:
  milliseconds Spent() {
    if (!std::exchange(isCounting_, true)) {
      spent_ = {};
      MainQueue::Shared().Post([this] { isCounting_ = false; });
    }
    return spent_;
  }

  milliseconds spent_{};
  bool isCounting_ = false;
};

}  // namespace

std::vector<std::string> TargetsOfType(NSString* type) {
  if ([type isEqualToString:NSStringPboardType]) return {kTextTargets.begin(), kTextTargets.end()};
  if ([type isEqualToString:NSFilenamesPboardType] || [type isEqualToString:NSURLPboardType]) return {kURIList};
  std::vector<std::string> targets;
  for (const TypeAndTarget& each : kTable) {
    if ([each.type isEqualToString:type]) targets.emplace_back(each.target);
  }
  if (targets.empty()) targets.push_back(UTF8(type));
  return targets;
}

void AddTargets(NSString* type, NSData* data, TargetContents& contents) {
  if ([type isEqualToString:NSStringPboardType]) return AddText(data, contents);
  if ([type isEqualToString:NSFilenamesPboardType]) return AddFiles(StringsOf(Deserialized<NSArray>(data)), contents);
  if ([type isEqualToString:NSURLPboardType]) {
    NSString* url = Deserialized<NSString>(data);
    return AddURIs(url != nil ? @[ url ] : nil, contents);
  }
  if ([type isEqualToString:@"WebURLsWithTitlesPboardType"]) {
    AddPageAddresses(Deserialized<NSArray>(data), contents);
  }
  for (const std::string& target : TargetsOfType(type)) contents.emplace(target, Bytes(data));
}

NSArray* TypesOfTargets(const std::vector<std::string>& targets) {
  NSMutableArray* types = [NSMutableArray array];
  const auto add = [types](NSString* type) {
    if (![types containsObject:type]) [types addObject:type];
  };
  for (const std::string& target : targets) {
    if (Contains(kNoContents, target)) continue;
    const auto found =
        std::find_if(kTable.begin(), kTable.end(), [&target](const auto& each) { return each.target == target; });
    if (Contains(kTextTargets, target)) add(NSStringPboardType);
    if (target == kURIList) add(NSFilenamesPboardType);
    NSString* name = found != kTable.end() ? found->type : Decoded(target, NSUTF8StringEncoding);
    if (name != nil) add(name);
  }
  return types;
}

NSData* DataOfTarget(NSString* type, const std::string& target, const std::string& bytes) {
  if ([type isEqualToString:NSFilenamesPboardType]) return Serialized(FilesOfURIList(bytes));
  if ([type isEqualToString:NSURLPboardType]) {
    NSArray* urls = URLsOfList(bytes);
    return [urls count] > 0 ? Serialized([[urls objectAtIndex:0] absoluteString]) : nil;
  }
  if ([type isEqualToString:NSStringPboardType] && IsLatin1(target)) {
    return [Decoded(bytes, NSISOLatin1StringEncoding) dataUsingEncoding:NSUTF8StringEncoding];
  }
  return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

NSString* TextOfData(NSData* data) {
  if (data == nil) return nil;
  const std::string bytes = Bytes(data);
  NSString* text = Decoded(bytes, NSUTF8StringEncoding);
  return text != nil ? text : Decoded(bytes, NSISOLatin1StringEncoding);
}

Result<Ref<NSArray>> ForeignTypes(const std::string& selection, SelectionLimits limits) {
  const auto targets = TurnTime::Shared().Spend(
      limits, [&](const SelectionLimits& left) { return Selections::Shared().Targets(selection, left); });
  if (!targets) return tl::unexpected(targets.error());
  return Retain(TypesOfTargets(*targets));
}

Result<Ref<NSData>> ForeignData(const std::string& selection, NSString* type, SelectionLimits limits) {
  for (const std::string& target : TargetsOfType(type)) {
    const auto bytes = TurnTime::Shared().Spend(
        limits, [&](const SelectionLimits& left) { return Selections::Shared().Read(selection, target, left); });
    if (!bytes && bytes.error().code == kNoAnswer) return tl::unexpected(bytes.error());
    if (!bytes) continue;
    if (NSData* data = DataOfTarget(type, target, *bytes)) return Retain(data);
  }
  return Ref<NSData>();
}

}  // namespace tessaro::platform
