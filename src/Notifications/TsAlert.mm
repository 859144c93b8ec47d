#import "Notifications/TsAlert.h"

#include <optional>
#include <string>

#include "Base/TsProperty.h"
#include "Base/TsString.h"

namespace platform = tessaro::platform;

namespace {

std::optional<std::string> Utf8(NSString* string) {
  return string != nil ? std::optional(TsStdString(string)) : std::nullopt;
}

NSString* StringOrNil(const std::optional<std::string>& text) { return text ? TsNSString(*text) : nil; }

}  // namespace

#define TEXT_PROPERTY(getter, setter, field) \
  -(NSString*)getter {                       \
    return StringOrNil(_contents.field);     \
  }                                          \
  -(void)setter : (NSString*)value {         \
    _contents.field = Utf8(value);           \
  }

#define FLAG_PROPERTY(getter, setter, field) \
  -(BOOL)getter {                            \
    return _contents.field;                  \
  }                                          \
  -(void)setter : (BOOL)value {              \
    _contents.field = value != NO;           \
  }

@implementation TsAlert

TEXT_PROPERTY(identifier, setIdentifier, identifier)
TEXT_PROPERTY(title, setTitle, title)
TEXT_PROPERTY(subtitle, setSubtitle, subtitle)
TEXT_PROPERTY(informativeText, setInformativeText, text)
TEXT_PROPERTY(soundName, setSoundName, soundName)
FLAG_PROPERTY(hasActionButton, setHasActionButton, hasActionButton)
TEXT_PROPERTY(actionButtonTitle, setActionButtonTitle, actionButtonTitle)
FLAG_PROPERTY(hasReplyButton, setHasReplyButton, hasReplyField)
TEXT_PROPERTY(responsePlaceholder, setResponsePlaceholder, replyPlaceholder)

- (instancetype)initWithContents:(const platform::UserNotification&)contents {
  if ((self = [super init]) != nil) _contents = contents;
  return self;
}

- (const platform::UserNotification&)contents {
  return _contents;
}

TS_COPIED(NSDate, deliveryDate, DeliveryDate)

- (NSInteger)activationType {
  return _activationType;
}

- (NSAttributedString*)response {
  return _response;
}

- (void)setActivationType:(NSInteger)type response:(NSString*)response {
  _activationType = type;
  _response = response != nil ? Adopt([[NSAttributedString alloc] initWithString:response]) : nullptr;
}

- (NSString*)description {
  // Descriptions end in logs, and the texts are mail.
  return [NSString stringWithFormat:@"<%@: %p, identifier %@>", [self class], self, [self identifier]];
}

@end
