#include "Base/TsLog.h"
#include "Contacts/TsAddressBookWindowController.h"
#include "Contacts/TsRecipient.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"

void recipientsForGroupName(const ScriptArguments& args) {
  args.GetReturnValue().SetNull();
  NSArray* recipients = TsRecipientsForGroupName(convertToNSString(args[0]));
  if (recipients == nil) return;
  NSString* json = TsConvertToJSONString(recipients);
  if (json == nil) return TsLogWarning(@"Couldn't convert to JSON");
  ReturnString(args, json);
}

void pickEmailAddresses(const ScriptArguments& args) {
  id view = ToObjcObject(args[0]);
  if (view == nil) return TsLogError(@"Need a view with a window to add a toolbar: %@", view);
  NSDictionary* translations = FromJSON<NSDictionary>(args[1], @"translations JSON");
  if (translations == nil) return;
  [[TsAddressBookWindowController sharedInstanceWithTranslations:translations] openForWindow:view];
}
