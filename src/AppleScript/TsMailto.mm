#include "AppleScript/TsMailto.h"

#include "AppleScript/MailtoLink.h"
#import "AppleScript/TsASOutgoingMessage.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"

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
