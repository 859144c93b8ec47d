#include "Base/TsLog.h"
#include "Settings/TsLoginItem.h"
#include "Settings/TsUserDefaults.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Utilities/TsJSON.h"

namespace {

struct ReturnDefault {
  const ScriptArguments& args;

  void operator()(TsNoDefault) const { args.GetReturnValue().SetNull(); }
  void operator()(bool value) const { args.GetReturnValue().Set(value); }
  void operator()(std::int32_t value) const { args.GetReturnValue().Set(value); }
  void operator()(NSString* value) const { ReturnString(args, value); }
};

}  // namespace

void getUserDefault(const ScriptArguments& args) {
  std::visit(ReturnDefault{args}, TsUserDefault(convertToNSString(args[0])));
}

void setUserDefault(const ScriptArguments& args) {
  NSString* key = convertToNSString(args[0]);
  const v8::Local<v8::Value> value = args[1];
  if (value->IsBoolean()) return TsSetUserDefault(key, value->IsTrue());
  if (value->IsInt32()) return TsSetUserDefault(key, value.As<v8::Int32>()->Value());
  if (value->IsString()) return TsSetUserDefault(key, convertToNSString(value));
  if (value->IsNull()) return TsSetUserDefault(key, TsNoDefault());
  TsLogError(@"Unknown type - cannot set value for key %@", key);
}

void removeUserDefault(const ScriptArguments& args) { TsSetUserDefault(convertToNSString(args[0]), TsNoDefault()); }

void synchronizeUserDefaults(const ScriptArguments&) { TsSynchronizeUserDefaults(); }

void getStartAtLogin(const ScriptArguments& args) { args.GetReturnValue().Set(TsStartsAtLogin()); }

void setStartAtLogin(const ScriptArguments& args) {
  TsSetStartsAtLogin(args[0]->IsTrue());
  args.GetReturnValue().Set(TsStartsAtLogin());
}

void migrateStartAtLogin(const ScriptArguments&) { TsRemovePreviousVersionsLoginItem(); }

void getTextReplacements(const ScriptArguments& args) {
  NSString* json = TsConvertToJSONString(TsTextReplacements());
  if (json == nil) TsLogWarning(@"Couldn't convert to JSON");
  ReturnStringOrNull(args, json);
}
