#include <vector>

#include "Base/TsLog.h"
#import "Notifications/TsSound.h"
#import "Notifications/TsUserNotification.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

namespace {

void LogSystemSound(NSString* name) {
  TsSound* sound = [TsSound soundNamed:name];
  TsLogDebug(@"sound with name '%@' '%@' %@", name, [sound name], sound);
}

}  // namespace

void deliverUserNotification(const ScriptArguments& args) {
  v8::Isolate* isolate = args.GetIsolate();
  NSString* soundName = convertToNSString(args[4]);
  if (soundName != nil) LogSystemSound(soundName);
  [[TsUserNotification sharedInstance] showNotification:convertToNSString(args[0])
                                                  title:convertToNSString(args[1])
                                               subTitle:convertToNSString(args[2])
                                        informativeText:convertToNSString(args[3])
                                              soundName:soundName
                                        hasActionButton:args[7]->BooleanValue(isolate)
                                      actionButtonTitle:convertToNSString(args[8])
                                    responsePlaceholder:convertToNSString(args[6])
                                         hasReplyButton:args[5]->BooleanValue(isolate)
                                              deliverAt:convertToNSString(args[9])];
}

void removeUserNotifications(const ScriptArguments&) { [[TsUserNotification sharedInstance] removeNotifications]; }

void removeUserNotification(const ScriptArguments& args) {
  [[TsUserNotification sharedInstance] removeNotification:convertToNSString(args[0])];
}

void getSoundNames(const ScriptArguments& args) {
  v8::Isolate* isolate = args.GetIsolate();
  std::vector<v8::Local<v8::Value>> names;
  for (TsSound* sound in [TsSound sounds]) {
    v8::Local<v8::String> name;
    if (ToScriptString(isolate, [sound name]).ToLocal(&name)) names.push_back(name);
  }
  args.GetReturnValue().Set(v8::Array::New(isolate, names.data(), names.size()));
}

void playSoundWithName(const ScriptArguments& args) {
  NSString* name = convertToNSString(args[0]);
  for (TsSound* sound in [TsSound sounds]) {
    if (![[sound name] isEqual:name] || ![sound isPlayable]) continue;
    [sound play];
    return args.GetReturnValue().Set(true);
  }
  args.GetReturnValue().Set(false);
}
