#import "AppleScript/TsASOutgoingMessage.h"

#include <chrono>
#include <vector>

#include "AppleScript/MailtoLink.h"
#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/HFSPath.h"
#include "Platform/MainQueue.h"
#include "Platform/StandardDirectories.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

NSString* const TsComposeOutgoingMessageNotification = @"TsComposeOutgoingMessageNotification";
NSString* const TsComposeOutgoingMessageNotificationMessageKey = @"message";
NSString* const TsComposeOutgoingMessageNotificationOptionsKey = @"options";
NSString* const TsComposeOutgoingMessageNotificationDirectlySendKey = @"directly-send?";
NSString* const TsComposeOutgoingMessageNotificationOptimizeAttachmentKey = @"optimize-attachments?";
NSString* const TsComposeOutgoingMessageNotificationImageAttachMethodKey = @"image-attach-method";
NSString* const TsComposeOutgoingMessageNotificationImageSizeKey = @"image-size";
NSString* const TsComposeOutgoingMessageNotificationImageFileTypeKey = @"image-file-type";

namespace {

// The time a script has to complete a message after making it visible.
constexpr std::chrono::milliseconds kTimeToComplete{1000};

int64_t NextId() {
  static int64_t lastId = -1;
  return ++lastId;
}

Ref<NSMutableArray> NewArray() { return Adopt([[NSMutableArray alloc] init]); }

// Paragraphs, each with a line feed at its end.
NSString* Body(id content) {
  NSAttributedString* rich = As<NSAttributedString>(content);
  NSString* text = rich != nil ? [rich string] : As<NSString>(content);
  NSMutableString* body = [NSMutableString stringWithCapacity:[text length] + 1];
  for (NSUInteger start = 0; start < [text length];) {
    NSUInteger end = 0;
    [text getParagraphStart:nullptr end:&end contentsEnd:nullptr forRange:NSMakeRange(start, 0)];
    [body appendString:[text substringWithRange:NSMakeRange(start, end - start)]];
    if (![body hasSuffix:@"\n"]) [body appendString:@"\n"];
    start = end;
  }
  return body;
}

void AddIfNotEmpty(NSMutableDictionary* dictionary, NSString* key, NSString* text) {
  if ([text length] > 0) [dictionary setObject:text forKey:key];
}

NSScriptClassDescription* ClassDescription(id object) {
  return static_cast<NSScriptClassDescription*>([object classDescription]);
}

// Dictionaries can hold NSNull, and JSON writes it as null.
id TsSanitizeValue(id value) { return value != nil ? value : [NSNull null]; }

NSArray* RecipientDictionaries(NSArray* recipients) {
  NSMutableArray* dictionaries = [NSMutableArray arrayWithCapacity:[recipients count]];
  for (TsASOutgoingMessageRecipient* recipient in recipients) {
    [dictionaries addObject:@{
      @"name" : TsSanitizeValue([recipient name]),
      @"email" : TsSanitizeValue([recipient address]),
    }];
  }
  return dictionaries;
}

NSArray* Paths(NSArray* attachments) {
  NSMutableArray* paths = [NSMutableArray arrayWithCapacity:[attachments count]];
  for (TsASOutgoingMessageAttachment* attachment in attachments) [paths addObject:TsSanitizeValue([attachment path])];
  return paths;
}

NSString* WithHome(NSString* path) {
  if (![path isEqualToString:@"~"] && ![path hasPrefix:@"~/"]) return [path stringByExpandingTildeInPath];
  return [TsNSString(platform::HomeDirectory().native()) stringByAppendingString:[path substringFromIndex:1]];
}

NSString* NormalizedPath(NSString* path) {
  NSString* expanded = WithHome(path);
  if ([expanded rangeOfString:@":"].location == NSNotFound) return expanded;
  const auto posixPath = platform::PosixPathOfHFSPath(TsStdString(expanded));
  return posixPath ? TsNSString(*posixPath) : expanded;
}

}  // namespace

@implementation TsASOutgoingMessageRecipient

- (instancetype)init {
  self = [super init];
  if (self) {
    [self setAddress:@""];
    [self setName:@""];
  }
  return self;
}

TS_COPIED(NSString, address, Address)
TS_COPIED(NSString, name, Name)
TS_RETAINED(NSScriptObjectSpecifier, objectSpecifier, ObjectSpecifier)

@end

@implementation TsASOutgoingMessageAttachment

- (instancetype)init {
  self = [super init];
  if (self) [self setPath:@""];
  return self;
}

- (NSString*)path {
  return _path;
}

- (void)setPath:(NSString*)path {
  _path = Copy(NormalizedPath(path));
}

TS_RETAINED(NSScriptObjectSpecifier, objectSpecifier, ObjectSpecifier)

@end

@implementation TsASOutgoingMessageSignature

TS_COPIED(NSString, name, Name)
TS_COPIED(NSString, content, Content)

@end

@implementation TsASOutgoingMessage

+ (NSMutableArray*)outgoingMessages {
  static Forever<Ref<NSMutableArray>> messages(NewArray());
  return *messages;
}

- (instancetype)init {
  self = [super init];
  if (!self) return nil;
  [self setId:NextId()];
  [self setSender:@""];
  [self setSubject:@""];
  [self setContent:@""];
  [self setToRecipients:NewArray()];
  [self setCcRecipients:NewArray()];
  [self setBccRecipients:NewArray()];
  [self setMailAttachments:NewArray()];
  [self setDirectlySend:NO];
  [self setOptimizeAttachments:YES];
  [self setDidSetOptimizeAttachments:NO];
  [self setMessageSignature:Adopt([[TsASOutgoingMessageSignature alloc] init])];
  TsLogDebug(@"Created new and empty outgoing message.");
  return self;
}

// ---- Elements

- (NSScriptObjectSpecifier*)objectSpecifier {
  return Adopt([[NSUniqueIDSpecifier alloc] initWithContainerClassDescription:ClassDescription(NSApp)
                                                           containerSpecifier:[NSApp objectSpecifier]
                                                                          key:@"outgoingMessages"
                                                                     uniqueID:[NSNumber numberWithLongLong:_id]])
      .Autoreleased();
}

// Gives the elements, from the one at `first` on, their specifiers.
- (void)specifyElements:(NSArray*)elements ofKey:(NSString*)key from:(NSUInteger)first {
  const NSUInteger count = [elements count];
  if (first >= count) return;
  NSScriptObjectSpecifier* container = [self objectSpecifier];
  NSScriptClassDescription* description = ClassDescription(self);
  for (NSUInteger index = first; index < count; ++index) {
    const auto specifier = Adopt([[NSIndexSpecifier alloc] initWithContainerClassDescription:description
                                                                          containerSpecifier:container
                                                                                         key:key
                                                                                       index:NSInteger(index)]);
    [[elements objectAtIndex:index] setObjectSpecifier:specifier];
  }
}

- (void)insert:(id)element into:(NSMutableArray*)elements ofKey:(NSString*)key at:(NSUInteger)index {
  [elements insertObject:element atIndex:index];
  [self specifyElements:elements ofKey:key from:index];
}

- (void)removeFrom:(NSMutableArray*)elements ofKey:(NSString*)key at:(NSUInteger)index {
  [elements removeObjectAtIndex:index];
  [self specifyElements:elements ofKey:key from:index];
}

// A list of elements with the accessors that key-value coding looks for.
#define ELEMENTS(name, Name)                                                \
  -(NSMutableArray*)name {                                                  \
    return _##name;                                                         \
  }                                                                         \
  -(void)set##Name : (NSMutableArray*)elements {                            \
    _##name = Retain(elements);                                             \
    [self specifyElements:elements ofKey:@ #name from:0];                   \
  }                                                                         \
  -(void)insertObject : (id)element in##Name##AtIndex : (NSUInteger)index { \
    [self insert:element into:_##name ofKey:@ #name at:index];              \
  }                                                                         \
  -(void)removeObjectFrom##Name##AtIndex : (NSUInteger)index {              \
    [self removeFrom:_##name ofKey:@ #name at:index];                       \
  }

ELEMENTS(toRecipients, ToRecipients)
ELEMENTS(ccRecipients, CcRecipients)
ELEMENTS(bccRecipients, BccRecipients)
ELEMENTS(mailAttachments, MailAttachments)

// ---- Properties

@synthesize directlySend = _directlySend;
@synthesize optimizeAttachments = _optimizeAttachments;
@synthesize didSetOptimizeAttachments = _didSetOptimizeAttachments;
@synthesize id = _id;

- (void)setOptimizeAttachments:(BOOL)optimizes {
  _optimizeAttachments = optimizes;
  [self setDidSetOptimizeAttachments:YES];
}

TS_COPIED(NSString, sender, Sender)
TS_COPIED(NSString, subject, Subject)
TS_COPIED(NSString, imageAttachMethod, ImageAttachMethod)
TS_COPIED(NSString, imageFileType, ImageFileType)
TS_COPIED(NSString, imageSize, ImageSize)

- (id)content {
  return _content;
}

- (void)setContent:(id)content {
  _content = Retain<NSObject>(content);
}

TS_RETAINED(TsASOutgoingMessageSignature, messageSignature, MessageSignature)

- (void)setVisible:(BOOL)visible {
  if (!visible) return;
  platform::MainQueue::Shared().PostDelayed(kTimeToComplete,
                                            [kept = Retain(self)] { [kept handleComposeScriptCommand:nil]; });
}

// ---- Composing

- (NSDictionary*)messageDictionary {
  NSMutableDictionary* message = [NSMutableDictionary dictionary];
  AddIfNotEmpty(message, @"sender", _sender);
  AddIfNotEmpty(message, @"subject", _subject);
  AddIfNotEmpty(message, @"body", Body(_content));
  [message setObject:RecipientDictionaries(_toRecipients) forKey:@"to"];
  [message setObject:RecipientDictionaries(_ccRecipients) forKey:@"cc"];
  [message setObject:RecipientDictionaries(_bccRecipients) forKey:@"bcc"];
  [message setObject:Paths(_mailAttachments) forKey:@"attachment-paths"];
  return message;
}

- (NSDictionary*)optionsDictionary {
  NSNumber* optimizes = _didSetOptimizeAttachments ? [NSNumber numberWithBool:_optimizeAttachments] : nil;
  return @{
    TsComposeOutgoingMessageNotificationOptimizeAttachmentKey : TsSanitizeValue(optimizes),
    TsComposeOutgoingMessageNotificationDirectlySendKey : [NSNumber numberWithBool:_directlySend],
    TsComposeOutgoingMessageNotificationImageAttachMethodKey : TsSanitizeValue(_imageAttachMethod),
    TsComposeOutgoingMessageNotificationImageFileTypeKey : TsSanitizeValue(_imageFileType),
    TsComposeOutgoingMessageNotificationImageSizeKey : TsSanitizeValue(_imageSize),
  };
}

- (id)handleComposeScriptCommand:(NSScriptCommand*)command {
  NSDictionary* message = [self messageDictionary];
  NSDictionary* options = [self optionsDictionary];
  TsLogInfo(@"Composing new outgoing message %@", message);
  TsLogInfo(@"Outgoing message options: %@", options);
  TsPost(TsComposeOutgoingMessageNotification, nil, @{
    TsComposeOutgoingMessageNotificationMessageKey : message,
    TsComposeOutgoingMessageNotificationOptionsKey : options,
  });
  return nil;
}

@end

// ---- Links

namespace {

NSMutableArray* Recipients(const std::vector<std::string>& addresses) {
  NSMutableArray* recipients = [NSMutableArray arrayWithCapacity:addresses.size()];
  for (const std::string& address : addresses) {
    auto recipient = Adopt([[TsASOutgoingMessageRecipient alloc] init]);
    [recipient setAddress:TsNSString(address)];
    [recipient setName:nil];
    [recipients addObject:recipient];
  }
  return recipients;
}

void Compose(const MailtoLink& link) {
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  [message setToRecipients:Recipients(link.to)];
  [message setCcRecipients:Recipients(link.cc)];
  [message setBccRecipients:Recipients(link.bcc)];
  [message setSubject:TsNSString(link.subject)];
  [message setContent:TsNSString(link.body)];
  [[TsASOutgoingMessage outgoingMessages] addObject:message];
  [message handleComposeScriptCommand:nil];
}

}  // namespace

Result<void> TsComposeMailtoLink(const std::string& link) {
  const auto parsed = ParseMailtoLink(link);
  if (!parsed) {
    TsLogWarning(@"Refused a mailto link: %s", parsed.error().message.c_str());
    return tl::unexpected(parsed.error());
  }
  Compose(*parsed);
  return {};
}
