#include "Base/TsLog.h"
#include "Settings/TsLoginItem.h"
#include "Settings/TsTextReplacements.h"
#include "Settings/TsUserDefaults.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "Utilities/TsJSON.h"

namespace {

struct ReturnDefault {
  const v8::FunctionCallbackInfo<v8::Value>& args;

  void operator()(TsNoDefault) const { args.GetReturnValue().SetNull(); }
  void operator()(bool value) const { args.GetReturnValue().Set(value); }
  void operator()(std::int32_t value) const { args.GetReturnValue().Set(value); }
  void operator()(NSString* value) const { ReturnString(args, value); }
};

}  // namespace

void getUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args) {
  std::visit(ReturnDefault{args}, TsUserDefault(convertToNSString(args[0])));
}

void setUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* key = convertToNSString(args[0]);
  const v8::Local<v8::Value> value = args[1];
  if (value->IsBoolean()) return TsSetUserDefault(key, value->IsTrue());
  if (value->IsInt32()) return TsSetUserDefault(key, value.As<v8::Int32>()->Value());
  if (value->IsString()) return TsSetUserDefault(key, convertToNSString(value));
  if (value->IsNull()) return TsSetUserDefault(key, TsNoDefault());
  TsLogError(@"Unknown type - cannot set value for key %@", key);
}

void removeUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsSetUserDefault(convertToNSString(args[0]), TsNoDefault());
}

void synchronizeUserDefaults(const v8::FunctionCallbackInfo<v8::Value>&) { TsSynchronizeUserDefaults(); }

void getStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>& args) { args.GetReturnValue().Set(TsStartsAtLogin()); }

void setStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsSetStartsAtLogin(args[0]->IsTrue());
  args.GetReturnValue().Set(TsStartsAtLogin());
}

void migrateStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>&) { TsRemovePreviousVersionsLoginItem(); }

void getTextReplacements(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSString* json = TsConvertToJSONString(TsTextReplacements());
  if (json != nil) return ReturnString(args, json);
  TsLogWarning(@"Couldn't convert to JSON");
  args.GetReturnValue().SetNull();
}
