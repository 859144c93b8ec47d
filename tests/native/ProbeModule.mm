#include "Probe.h"
#include "TessaroNative/StartUp.h"
#include "Utilities/TsJSON.h"

namespace {

void InitProbe(v8::Local<v8::Object> exports, v8::Local<v8::Value> module, v8::Local<v8::Context>, void*) {
  Init(exports, module);
  const auto probe = AddProbeObject(exports, "probe");
  const auto attach = [probe](const char* name, void (*attachTo)(v8::Local<v8::Object>)) {
    attachTo(AddProbeObject(probe, name));
  };
  AttachCoreProbe(probe);
  AttachMessagesProbe(probe);
  const auto bench = AddProbeObject(probe, "bench");
  AttachBenchProbe(bench);
  AttachComposeProbe(bench);
  attach("platform", AttachPlatformProbe);
  attach("bus", AttachBusProbe);
  attach("keychain", AttachKeychainProbe);
  attach("statusItem", AttachStatusItemProbe);
  attach("reachability", AttachReachabilityProbe);
  attach("notifications", AttachNotificationsProbe);
  attach("notificationServer", AttachNotificationServerProbe);
  attach("values", AttachValuesProbe);
  attach("integrations", AttachIntegrationProbe);
  attach("menus", AttachMenuProbe);
  attach("pasteboard", AttachPasteboardProbe);
  attach("windows", AttachWindowProbe);
  attach("composition", AttachCompositionProbe);
  attach("contacts", AttachContactsProbe);
  attach("updates", AttachUpdateProbe);
  attach("shortcuts", AttachShortcutProbe);
  attach("macBodies", AttachMacBodiesProbe);
  attach("dialogs", AttachDialogProbe);
  attach("capture", AttachCaptureProbe);
}

}  // namespace

void ScriptCallback::operator()(std::string_view text) const {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  const auto function = function_->Get(isolate);
  const auto context = function->GetCreationContext().ToLocalChecked();
  const v8::Context::Scope entered(context);
  v8::Local<v8::Value> argument = ScriptText(text);
  static_cast<void>(node::MakeCallback(isolate, context->Global(), function, 1, &argument, {0, 0}));
}

// JSON needs a container around it.
void ReturnObject(ProbeArguments args, id value) {
  v8::Local<v8::String> text;
  if (value == nil || !ToScriptString(args.GetIsolate(), TsConvertToJSONString(@[ value ])).ToLocal(&text)) return;
  const auto context = args.GetIsolate()->GetCurrentContext();
  const auto box = v8::JSON::Parse(context, text).ToLocalChecked().As<v8::Array>();
  args.GetReturnValue().Set(box->Get(context, 0).ToLocalChecked());
}

id ObjectFromScript(v8::Local<v8::Value> value) {
  if (value->IsNullOrUndefined()) return nil;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto box = v8::Array::New(isolate, &value, 1);
  const auto text = v8::JSON::Stringify(isolate->GetCurrentContext(), box).ToLocalChecked();
  return [TsConvertFromJSONString(convertToNSString(text), nullptr) objectAtIndex:0];
}

v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto object = v8::Object::New(isolate);
  parent->Set(isolate->GetCurrentContext(), ScriptText(name), object).Check();
  return object;
}

NODE_MODULE_CONTEXT_AWARE(TessaroNativeProbe, InitProbe)
