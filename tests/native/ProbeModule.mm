#import <Foundation/Foundation.h>

#include "CaptureProbe.h"
#include "CompositionProbe.h"
#include "DialogProbe.h"
#include "IntegrationProbe.h"
#include "KeychainProbe.h"
#include "MenuProbe.h"
#include "MigrationProbe.h"
#include "NotificationsProbe.h"
#include "PlatformProbe.h"
#include "Probe.h"
#include "ShortcutProbe.h"
#include "StatusItemProbe.h"
#include "TessaroNative/StartUp.h"
#include "UpdateProbe.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"
#include "ValuesProbe.h"
#include "WindowProbe.h"

namespace {

void InitProbe(v8::Local<v8::Object> exports, v8::Local<v8::Value> module, v8::Local<v8::Context>, void*) {
  Init(exports, module);
  const auto probe = AddProbeObject(exports, "probe");
  AttachCoreProbe(probe);
  AttachPlatformProbe(AddProbeObject(probe, "platform"));
  AttachBusProbe(AddProbeObject(probe, "bus"));
  AttachKeychainProbe(AddProbeObject(probe, "keychain"));
  AttachStatusItemProbe(AddProbeObject(probe, "statusItem"));
  AttachReachabilityProbe(AddProbeObject(probe, "reachability"));
  AttachMigrationProbe(AddProbeObject(probe, "migration"));
  AttachNotificationsProbe(AddProbeObject(probe, "notifications"));
  AttachNotificationServerProbe(AddProbeObject(probe, "notificationServer"));
  AttachValuesProbe(AddProbeObject(probe, "values"));
  AttachIntegrationProbe(AddProbeObject(probe, "integrations"));
  AttachMenuProbe(AddProbeObject(probe, "menus"));
  AttachWindowProbe(AddProbeObject(probe, "windows"));
  AttachCompositionProbe(AddProbeObject(probe, "composition"));
  AttachContactsProbe(AddProbeObject(probe, "contacts"));
  AttachUpdateProbe(AddProbeObject(probe, "updates"));
  AttachShortcutProbe(AddProbeObject(probe, "shortcuts"));
  AttachMacBodiesProbe(AddProbeObject(probe, "macBodies"));
  AttachDialogProbe(AddProbeObject(probe, "dialogs"));
  AttachCaptureProbe(AddProbeObject(probe, "capture"));
}

}  // namespace

void ReturnJSON(ProbeArguments args, id value) {
  v8::Local<v8::String> text;
  if (value == nil || !ToScriptString(args.GetIsolate(), TsConvertToJSONString(value)).ToLocal(&text)) return;
  args.GetReturnValue().Set(text);
}

id ParsedArgument(ProbeArguments args, int index) {
  NSString* text = index < args.Length() ? convertToNSString(args[index]) : nil;
  return text == nil ? nil : TsConvertFromJSONString(text, nullptr);
}

v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto object = v8::Object::New(isolate);
  parent->Set(isolate->GetCurrentContext(), v8::String::NewFromUtf8(isolate, name).ToLocalChecked(), object).Check();
  return object;
}

NODE_MODULE_CONTEXT_AWARE(TessaroNativeProbe, InitProbe)
