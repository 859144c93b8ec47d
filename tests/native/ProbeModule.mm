#import <objc/runtime.h>

#include <map>
#include <sstream>
#include <vector>

#include "Base/Ref.h"
#include "Probe.h"
#include "TessaroNative/StartUp.h"
#include "Utilities/TsJSON.h"

namespace {

void InitProbe(v8::Local<v8::Object> exports, v8::Local<v8::Value> module, v8::Local<v8::Context>, void*) {
  Init(exports, module);
  ProbeGroup::AttachAll(AddProbeObject(exports, "probe"));
}

// Made while the add-on is loaded, in any order.
std::vector<const ProbeGroup*>& Groups() {
  static std::vector<const ProbeGroup*> groups;
  return groups;
}

// Objects that script has seen, each once, by their handles.
std::vector<Ref<NSObject>>& Known() {
  static std::vector<Ref<NSObject>> known;
  return known;
}

std::size_t HandleOf(NSObject* object) {
  auto& known = Known();
  for (std::size_t i = 0; i < known.size(); ++i) {
    if (known[i].get() == object) return i;
  }
  known.push_back(Retain(object));
  return known.size() - 1;
}

id Described(id object);

NSArray* DescribedAll(id objects) {
  NSMutableArray* all = [NSMutableArray array];
  for (id each in objects) [all addObject:Described(each)];
  return all;
}

// As JSON: dates as seconds since 2001, data as Base64, other objects by their handles.
id Described(id object) {
  if (object == nil) return [NSNull null];
  for (Class known in @[ [NSString class], [NSNumber class], [NSNull class] ]) {
    if ([object isKindOfClass:known]) return object;
  }
  if (NSDate* date = As<NSDate>(object)) return @([date timeIntervalSinceReferenceDate]);
  if (NSData* data = As<NSData>(object)) return [data base64EncodedStringWithOptions:0];
  if (NSDictionary* dictionary = As<NSDictionary>(object)) {
    return [NSDictionary dictionaryWithObjects:DescribedAll([dictionary allValues]) forKeys:[dictionary allKeys]];
  }
  for (Class collection in @[ [NSArray class], [NSSet class], [NSOrderedSet class] ]) {
    if ([object isKindOfClass:collection]) return DescribedAll(object);
  }
  return @{@"handle" : @(HandleOf(object)), @"class" : @(object_getClassName(object))};
}

id ObjectOf(id value) {
  if (NSNumber* handle = [As<NSDictionary>(value) objectForKey:@"handle"])
    return Known()[[handle unsignedIntegerValue]];
  if (NSString* data = [As<NSDictionary>(value) objectForKey:@"base64"])
    return Adopt([[NSData alloc] initWithBase64EncodedString:data options:0]).Autoreleased();
  if (NSArray* values = As<NSArray>(value)) {
    NSMutableArray* objects = [NSMutableArray array];
    for (id each in values) [objects addObject:ObjectOf(each)];
    return objects;
  }
  return value;
}

}  // namespace

ProbeGroup::ProbeGroup(const char* object, std::string_view names, std::vector<v8::FunctionCallback> functions,
                       Attach attachMore)
    : object_(object), names_(names), functions_(std::move(functions)), attachMore_(attachMore) {
  Groups().push_back(this);
}

void ProbeGroup::AttachAll(v8::Local<v8::Object> probe) {
  std::map<std::string_view, v8::Local<v8::Object>> objects{{"", probe}};
  for (const ProbeGroup* group : Groups()) {
    auto& object = objects[group->object_];
    if (object.IsEmpty()) object = AddProbeObject(probe, group->object_);
    std::istringstream names{std::string(group->names_)};
    for (const auto function : group->functions_) {
      std::string name;
      std::getline(names >> std::ws, name, ',');
      NODE_SET_METHOD(object, name.c_str(), function);
    }
    if (group->attachMore_ != nullptr) group->attachMore_(object);
  }
}

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
  if (value == nil || !ToScriptString(args.GetIsolate(), TsConvertToJSONString(@[ Described(value) ])).ToLocal(&text))
    return;
  const auto context = args.GetIsolate()->GetCurrentContext();
  const auto box = v8::JSON::Parse(context, text).ToLocalChecked().As<v8::Array>();
  args.GetReturnValue().Set(box->Get(context, 0).ToLocalChecked());
}

id ObjectFromScript(v8::Local<v8::Value> value) {
  if (value->IsNullOrUndefined()) return nil;
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto box = v8::Array::New(isolate, &value, 1);
  const auto text = v8::JSON::Stringify(isolate->GetCurrentContext(), box).ToLocalChecked();
  return ObjectOf([TsConvertFromJSONString(convertToNSString(text), nullptr) objectAtIndex:0]);
}

v8::Local<v8::Object> AddProbeObject(v8::Local<v8::Object> parent, const char* name) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto object = v8::Object::New(isolate);
  parent->Set(isolate->GetCurrentContext(), ScriptText(name), object).Check();
  return object;
}

NODE_MODULE_CONTEXT_AWARE(TessaroNativeProbe, InitProbe)
