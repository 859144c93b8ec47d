#import "Services/TsServicesProvider.h"

#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Services.h"
#include "Utilities/TsNotificationObserver.h"

NSString* const TsServiceProviderSearchNotification = @"TsServiceProviderSearchNotification";

namespace {

bool Has(NSPasteboard* pasteboard, NSString* type) { return [[pasteboard types] containsObject:type]; }

// nil, and the error, when there is no text.
NSString* Text(NSPasteboard* pasteboard, NSString* errorText, NSString** error) {
  NSString* text = Has(pasteboard, NSStringPboardType) ? [pasteboard stringForType:NSStringPboardType] : nil;
  if (text == nil && error != nullptr) *error = NSLocalizedString(errorText, nil);
  return text;
}

void AnswerNothing(NSPasteboard* pasteboard) {
  [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
  [pasteboard setString:@"" forType:NSStringPboardType];
}

// Scripts can reach the new message as well.
TsASOutgoingMessage* NewMessage() {
  auto message = Adopt([[TsASOutgoingMessage alloc] init]);
  [[TsASOutgoingMessage outgoingMessages] addObject:message];
  return message.Autoreleased();
}

}  // namespace

@implementation TsServicesProvider

- (void)searchSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error {
  NSString* text = Text(pasteboard, @"Error: No search string has been selected.", error);
  if (text == nil) return;
  TsPost(TsServiceProviderSearchNotification, text);
  AnswerNothing(pasteboard);
}

- (void)mailSelection:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error {
  NSString* text = Text(pasteboard, @"Error: No text has been selected.", error);
  if (text == nil) return;
  TsASOutgoingMessage* message = NewMessage();
  [message setContent:text];
  [message handleComposeScriptCommand:nil];
  AnswerNothing(pasteboard);
}

- (void)mailDocument:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error {
  const bool hasFiles = Has(pasteboard, NSFilenamesPboardType);
  NSArray* paths = hasFiles ? As<NSArray>([pasteboard propertyListForType:NSFilenamesPboardType]) : nil;
  if (paths == nil) {
    if (error != nullptr)
      *error = NSLocalizedString(@"Error: Pasteboard doesn't contain one or more files names.", nil);
    return;
  }
  NSMutableArray* attachments = [NSMutableArray array];
  for (id path in paths) {
    if (As<NSString>(path) == nil) continue;
    const auto attachment = Adopt([[TsASOutgoingMessageAttachment alloc] init]);
    [attachment setPath:path];
    [attachments addObject:attachment];
  }
  TsASOutgoingMessage* message = NewMessage();
  [message setMailAttachments:attachments];
  [message handleComposeScriptCommand:nil];
}

- (void)mailTo:(NSPasteboard*)pasteboard userData:(NSString*)userData error:(NSString**)error {
  NSString* address = Text(pasteboard, @"Error: No email address has been selected.", error);
  if (address == nil) return;
  const auto recipient = Adopt([[TsASOutgoingMessageRecipient alloc] init]);
  [recipient setAddress:address];
  [recipient setName:nil];
  TsASOutgoingMessage* message = NewMessage();
  [message setToRecipients:[NSMutableArray arrayWithObject:recipient]];
  [message handleComposeScriptCommand:nil];
  AnswerNothing(pasteboard);
}

@end

void TsRegisterServicesProvider(NSApplication* application) {
  static Forever<Ref<TsServicesProvider>> provider(Adopt([[TsServicesProvider alloc] init]));
  [application setServicesProvider:*provider];
}

void TsPerformService(NSString* serviceName, NSString* text) {
  if ([serviceName length] == 0 || [text length] == 0) return TsLogWarning(@"No Parameter found");
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
  [pasteboard setString:text forType:NSStringPboardType];
  const auto performed = tessaro::platform::PerformService(TsStdString(serviceName), TsStdString([pasteboard name]));
  if (!performed) TsLogWarning(@"The service %@ failed: %s", serviceName, performed.error().message.c_str());
}
