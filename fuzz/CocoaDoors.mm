#import <AppKit/AppKit.h>

#include <algorithm>
#include <string>
#include <vector>

#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/TsString.h"
#include "Base/TsUnicode.h"
#import "Contacts/TsRecipient.h"
#include "Doors.h"
#import "Extensions/NSDictionary+TsFile.h"
#import "Migration/TsMigration.h"
#import "Migration/TsWorkspaceStates.h"
#import "Platform/Linux/AppKit/CocoaAdditions.h"
#include "Platform/Linux/Clipboard/PasteboardTargets.h"
#import "Shortcuts/MASShortcut.h"
#include "Utilities/TsJSON.h"

namespace platform = tessaro::platform;

// The part of the application that scripting reaches for.
@interface ScriptedApplication : NSObject
@end

@implementation ScriptedApplication

- (NSMutableArray*)outgoingMessages {
  return [TsASOutgoingMessage outgoingMessages];
}

- (id)valueInOutgoingMessagesWithUniqueID:(NSNumber*)number {
  return [[self outgoingMessages] lastObject];
}

@end

namespace doors {

namespace {

NSString* StoreWith(std::string_view bytes) { return TsNSString(FileWith(bytes, "store.xml").native()); }

NSData* Data(std::string_view bytes) { return [NSData dataWithBytes:bytes.data() length:bytes.size()]; }

// A text is written as it is, and read as it was written.
void ExpectSame(id object) {
  NSString* json = TsConvertToJSONString(object);
  if (json == nil) return;
  NSError* error = nil;
  NSString* again = TsConvertToJSONString(TsConvertFromJSONString(json, &error));
  Expect([again length] == [json length], "what is written can be read");
}

// Inserts an object, deletes one, and saves. False when there is no store.
bool Change(TsPersistence* store, std::string_view entity, NSArray* objects) {
  TsManagedObjectContext* context = [store context];
  if ([context insert:entity] == nil) return false;
  if ([objects count] > 0) [context deleteObject:[objects objectAtIndex:0]];
  NSError* error = nil;
  Expect([context save:&error], "a store can be saved");
  return true;
}

}  // namespace

std::int64_t MakeOnlyMessage() {
  static const Ref<NSObject> application = Adopt<NSObject>([[ScriptedApplication alloc] init]);
  NSApp = static_cast<id>(application.get());
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  [[TsASOutgoingMessage outgoingMessages] setArray:@[ message.get() ]];
  return [message id];
}

void JSON(std::string_view bytes) {
  NSError* error = nil;
  const id object = TsConvertFromJSONString(TsNSString(bytes), &error);
  Expect((object == nil) == (error != nil), "a text is read or refused");
  if (object != nil) ExpectSame(object);
}

void AccountStore(std::string_view bytes) {
  NSString* path = StoreWith(bytes);
  const auto store = Adopt([[TsAccounts alloc] initWithPath:path]);
  NSArray* accounts = [store all];
  for (TsAccount* account in accounts) {
    ExpectSame([account dictionaryWithValues]);
    static_cast<void>([account color]);
  }
  if (!Change(store, "Account", accounts)) return;
  const auto again = Adopt([[TsAccounts alloc] initWithPath:path]);
  const NSUInteger expected = [accounts count] == 0 ? 1 : [accounts count];
  Expect([[again all] count] == expected, "what is saved can be read");
}

// The colour of an account is an archive.
void Color(std::string_view bytes) {
  static const Ref<TsAccounts> accounts = [] {
    const std::string file = FileWith("<database></database>", "colours.xml").native();
    return Adopt([[TsAccounts alloc] initWithPath:TsNSString(file)]);
  }();
  TsAccount* account = [[accounts context] insert:"Account"];
  [account setColorData:Data(bytes)];
  Expect([[account color] isKindOfClass:[NSColor class]], "a colour is a colour");
  [[accounts context] rollback];
}

void WorkspaceStore(std::string_view bytes) {
  NSString* path = StoreWith(bytes);
  const auto store = Adopt([[TsWorkspaceStates alloc] initWithPath:path]);
  NSArray* states = [store all];
  for (TsWorkspaceState* state in states) {
    for (TsGoogleAppState* tab in [state appStates]) static_cast<void>([tab identifier]);
    static_cast<void>([state active]);
  }
  if ([states count] > 0) [store setActiveWorkspaceState:[states lastObject]];
  static_cast<void>(Change(store, "WorkspaceState", states));
}

void Preferences(std::string_view bytes) {
  NSDictionary* list = [NSDictionary ts_dictionaryInPropertyListFile:TsNSString(FileWith(bytes, "a.plist").native())];
  ExpectSame(list);
}

// Texts that settings may hold, through the writer and back. XML has no U+FFFE, and GNUstep drops a byte order mark at
// the start of a text and after an escaped character.
void PropertyList(std::string_view bytes) {
  std::u16string characters = Utf8ToUtf16(bytes);
  std::erase(characters, u'\xFEFF');
  std::replace(characters.begin(), characters.end(), u'\xFFFE', u'\xFFFD');
  const auto text = TsNewString(std::move(characters));
  NSData* written = [NSPropertyListSerialization dataFromPropertyList:@{@"text" : text.get()}
                                                               format:NSPropertyListXMLFormat_v1_0
                                                     errorDescription:nullptr];
  NSDictionary* read = [NSPropertyListSerialization propertyListWithData:written
                                                                 options:NSPropertyListImmutable
                                                                  format:nullptr
                                                                   error:nullptr];
  Expect([[read objectForKey:@"text"] isEqualToString:text], "a text comes back from a property list");
}

void Shortcut(std::string_view bytes) {
  NSError* error = nil;
  const id shortcut = [NSKeyedUnarchiver unarchivedObjectOfClass:[MASShortcut class] fromData:Data(bytes) error:&error];
  Expect(shortcut == nil ? error != nil : [shortcut isMemberOfClass:[MASShortcut class]],
         "an archive has one shortcut");
}

void Recipients(std::string_view bytes) {
  NSArray* recipients = [TsRecipient fromString:TsNSString(bytes)];
  NSString* text = [TsRecipient toString:recipients];
  Expect([text length] <= 8 * bytes.size() + 8, "recipients are as long as their text");
  for (TsRecipient* each in recipients) ExpectSame(@[ [each address], [each name], [each stringForEmail] ]);
}

// Targets, one a line, then a line feed, then the data.
void Pasteboard(std::string_view bytes) {
  std::vector<std::string> targets;
  while (!bytes.empty() && targets.size() < 16) {
    const auto end = bytes.find('\n');
    const std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
    if (line.empty()) break;
    targets.emplace_back(line);
  }
  const std::string data(bytes);
  for (NSString* type in platform::TypesOfTargets(targets)) {
    for (const std::string& target : platform::TargetsOfType(type)) {
      NSData* held = platform::DataOfTarget(type, target, data);
      if (held == nil) continue;
      static_cast<void>(platform::TextOfData(held));
      platform::TargetContents contents;
      platform::AddTargets(type, held, contents);
    }
    platform::TargetContents contents;
    platform::AddTargets(type, Data(data), contents);
  }
}

}  // namespace doors
