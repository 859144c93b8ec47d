#include "Base/TsLog.h"
#include "Contacts/TsAddressBookWindowController.h"
#include "Contacts/TsRecipient.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsJSON.h"

void recipientsForGroupName(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().SetNull();
  NSArray* recipients = TsRecipientsForGroupName(convertToNSString(args[0]));
  if (recipients == nil) return;
  NSString* json = TsConvertToJSONString(recipients);
  if (json == nil) return TsLogWarning(@"Couldn't convert to JSON");
  ReturnString(args, json);
}

void pickEmailAddresses(const v8::FunctionCallbackInfo<v8::Value>& args) {
  id view = ToObjcObject(args[0]);
  if (view == nil) return TsLogError(@"Need a view with a window to add a toolbar: %@", view);
  NSString* text = convertToNSString(args[1]);
  NSError* error = nil;
  NSDictionary* translations = As<NSDictionary>(TsConvertFromJSONString(text, &error));
  if (translations == nil) {
    id reason = error != nil ? error : static_cast<id>(@"it is no object");
    return TsLogError(@"Couldn't parse translations JSON %@ because of %@", text, reason);
  }
  [[TsAddressBookWindowController sharedInstanceWithTranslations:translations] openForWindow:view];
}
