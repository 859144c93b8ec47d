#import "Contacts/TsRecipient.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/TsUnicode.h"
#include "Contacts/RecipientText.h"
#include "Platform/FoundationValues.h"

namespace platform = tessaro::platform;

namespace {

Ref<NSString> NewText(std::string_view latin1) {
  auto blank = platform::NewLatin1String(latin1.size());
  std::copy(latin1.begin(), latin1.end(), blank.characters);
  return blank.string;
}

Ref<NSString> NewText(std::u16string_view utf16) {
  if (FitsLatin1(utf16.data(), utf16.size())) {
    auto blank = platform::NewLatin1String(utf16.size());
    std::copy(utf16.begin(), utf16.end(), blank.characters);
    return blank.string;
  }
  auto blank = platform::NewUtf16String(utf16.size());
  std::copy(utf16.begin(), utf16.end(), blank.characters);
  return blank.string;
}

std::u16string Characters(NSString* string) {
  std::u16string characters([string length], u'\0');
  [string getCharacters:reinterpret_cast<unichar*>(characters.data()) range:NSMakeRange(0, characters.size())];
  return characters;
}

// Calls `visit` with the characters of the string, in one piece.
template <typename Visit>
void WithCharacters(NSString* string, const Visit& visit) {
  const auto view = platform::StringContents(string);
  if (view.latin1 != nullptr) {
    return visit(std::string_view(reinterpret_cast<const char*>(view.latin1), view.length));
  }
  if (view.utf16 != nullptr) return visit(std::u16string_view(view.utf16, view.length));
  const std::u16string characters = Characters(string);
  visit(std::u16string_view(characters));
}

// Latin-1 for as long as that will do.
class HeaderText {
 public:
  void Add(TsRecipient* recipient) {
    if (!latin1_.empty() || !utf16_.empty()) Append(std::string_view(", "));
    bool hasBracket = false;
    WithCharacters([recipient name], [&](auto name) {
      if (name.empty()) return;
      hasBracket = name.find('<') != name.npos;
      Append(std::string_view("\""));
      Append(name);
      Append(std::string_view("\" "));
    });
    if (hasBracket) return;
    Append(std::string_view("<"));
    WithCharacters([recipient address], [this](auto address) { Append(address); });
    Append(std::string_view(">"));
  }

  [[nodiscard]] Ref<NSString> Text() const { return isWide_ ? NewText(utf16_) : NewText(latin1_); }

 private:
  void Append(std::string_view text) {
    if (!isWide_) {
      latin1_ += text;
      return;
    }
    std::transform(text.begin(), text.end(), std::back_inserter(utf16_), [](char unit) { return Unit(unit); });
  }

  void Append(std::u16string_view text) {
    if (!isWide_) {
      isWide_ = true;
      Append(std::exchange(latin1_, {}));
    }
    utf16_ += text;
  }

  std::string latin1_;
  std::u16string utf16_;
  bool isWide_ = false;
};

// ---- Address book

BOOL HasAddress(ABPerson* person, NSString* address) {
  ABMultiValue* addresses = [person valueForProperty:kABEmailProperty];
  for (NSUInteger index = 0; index < [addresses count]; ++index) {
    if ([[addresses valueAtIndex:index] isEqual:address]) return YES;
  }
  return NO;
}

// nil for somebody without an address.
NSString* PrimaryAddress(ABPerson* person) {
  ABMultiValue* addresses = [person valueForProperty:kABEmailProperty];
  if ([addresses count] == 0) return nil;
  const NSUInteger primary = [addresses indexForIdentifier:[addresses primaryIdentifier]];
  return primary < [addresses count] ? [addresses valueAtIndex:primary] : nil;
}

bool IsLastNameFirst(NSInteger flags) {
  const NSInteger ordering = flags & kABNameOrderingMask;
  return (ordering != 0 ? ordering : [platform::SharedAddressBook() defaultNameOrdering]) == kABLastNameFirst;
}

NSString* FullName(ABPerson* person, NSInteger flags) {
  NSString* lastName = [person valueForProperty:kABLastNameProperty];
  const bool isLastNameFirst = IsLastNameFirst(flags);
  NSString* const parts[] = {
      [person valueForProperty:kABTitleProperty],
      isLastNameFirst ? lastName : nil,
      [person valueForProperty:kABFirstNameProperty],
      [person valueForProperty:kABMiddleNameProperty],
      isLastNameFirst ? nil : lastName,
      [person valueForProperty:kABSuffixProperty],
  };
  NSMutableArray* present = [NSMutableArray array];
  for (NSString* part : parts) {
    if (part != nil) [present addObject:part];
  }
  return [present componentsJoinedByString:@" "];
}

void AddMembers(NSMutableArray* recipients, ABGroup* group) {
  for (ABPerson* person in [group members]) {
    NSString* address = PrimaryAddress(person);
    if ([address length] == 0) continue;
    if (TsRecipient* recipient = [TsRecipient recipient:address person:person]) [recipients addObject:recipient];
  }
}

// A group on the way down, and those of its subgroups that are left to enter.
struct Level {
  Ref<NSString> id;
  Ref<NSEnumerator> subgroups;
};

// Without recursion: groups may be nested deeper than the stack is.
void AddAll(NSMutableArray* recipients, ABGroup* group) {
  std::vector<Level> levels;
  NSMutableSet* onTheWay = [NSMutableSet set];
  const auto enter = [&](ABGroup* entered) {
    NSString* uniqueId = [entered uniqueId];
    if ([onTheWay containsObject:uniqueId]) return;
    [onTheWay addObject:uniqueId];
    AddMembers(recipients, entered);
    levels.push_back({Retain(uniqueId), Retain<NSEnumerator>([[entered subgroups] objectEnumerator])});
  };
  enter(group);
  while (!levels.empty()) {
    if (ABGroup* subgroup = [levels.back().subgroups nextObject]) {
      enter(subgroup);
      continue;
    }
    [onTheWay removeObject:levels.back().id];
    levels.pop_back();
  }
}

NSDictionary* RecipientDictionary(TsRecipient* recipient) {
  if ([[recipient name] length] == 0) return @{@"email" : [recipient address]};
  return @{@"name" : [recipient name], @"email" : [recipient address]};
}

}  // namespace

@implementation TsRecipient

- (instancetype)initWithAddress:(Ref<NSString>)address name:(Ref<NSString>)name {
  self = [super init];
  if (self) {
    _address = std::move(address);
    _name = std::move(name);
  }
  return self;
}

- (instancetype)init {
  return [self initWithAddress:Copy(@"") name:Copy(@"")];
}

+ (instancetype)recipient:(NSString*)address name:(NSString*)name {
  return Adopt([[self alloc] initWithAddress:Copy(address) name:Copy(name != nil ? name : @"")]).Autoreleased();
}

+ (instancetype)recipient:(NSString*)address person:(ABPerson*)person {
  if (!HasAddress(person, address)) return nil;
  const NSInteger flags = [[person valueForProperty:kABPersonFlags] integerValue];
  const bool isCompany = (flags & kABShowAsMask) != kABShowAsPerson;
  return [self recipient:address
                    name:isCompany ? [person valueForProperty:kABOrganizationProperty] : FullName(person, flags)];
}

+ (NSArray*)recipientsFromGroup:(ABGroup*)group {
  NSMutableArray* recipients = [NSMutableArray array];
  AddAll(recipients, group);
  return recipients;
}

+ (NSString*)toString:(NSArray*)recipients {
  HeaderText text;
  for (TsRecipient* recipient in recipients) text.Add(recipient);
  return text.Text().Autoreleased();
}

+ (NSArray*)fromString:(NSString*)string {
  NSMutableArray* recipients = [NSMutableArray array];
  WithCharacters(string, [&](auto characters) {
    ForEachRecipient(characters, [&](const auto& piece) {
      const auto recipient = Adopt([[self alloc] initWithAddress:NewText(piece.address) name:NewText(piece.name)]);
      [recipients addObject:recipient.get()];
    });
  });
  return recipients;
}

- (NSString*)stringForEmail {
  HeaderText text;
  text.Add(self);
  return text.Text().Autoreleased();
}

- (NSString*)address {
  return _address;
}

- (void)setAddress:(NSString*)address {
  _address = Copy(address);
}

- (NSString*)name {
  return _name;
}

- (void)setName:(NSString*)name {
  _name = Copy(name);
}

@end

NSArray* TsRecipientsForGroupName(NSString* groupName) {
  for (ABGroup* group in [platform::SharedAddressBook() groups]) {
    if (![[group valueForProperty:kABGroupNameProperty] isEqual:groupName]) continue;
    NSMutableArray* dictionaries = [NSMutableArray array];
    for (TsRecipient* recipient in [TsRecipient recipientsFromGroup:group]) {
      [dictionaries addObject:RecipientDictionary(recipient)];
    }
    return dictionaries;
  }
  return nil;
}
