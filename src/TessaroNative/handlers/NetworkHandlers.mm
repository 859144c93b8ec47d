#import <Foundation/Foundation.h>

#include <string>
#include <utility>

#include "Reachability/TsReachability.h"
#include "TessaroNative/TsNetworkRequest.h"
#include "TessaroNative/handlers/Handlers.h"

namespace platform = tessaro::platform;

namespace {

std::string ToStdString(v8::Isolate* isolate, v8::Local<v8::Value> string) {
  const v8::String::Utf8Value utf8(isolate, string);
  return {*utf8, static_cast<std::size_t>(utf8.length())};
}

// An option that can't be read is one that isn't there.
v8::Local<v8::Value> Read(v8::Local<v8::Context> context, v8::Local<v8::Object> object, v8::Local<v8::Value> key) {
  v8::Local<v8::Value> value;
  if (!object->Get(context, key).ToLocal(&value)) return v8::Undefined(context->GetIsolate());
  return value;
}

std::vector<platform::HTTPHeader> ReadHeaders(v8::Local<v8::Context> context, v8::Local<v8::Object> object) {
  v8::Isolate* isolate = context->GetIsolate();
  std::vector<platform::HTTPHeader> headers;
  v8::Local<v8::Array> names;
  if (!object->GetOwnPropertyNames(context).ToLocal(&names)) return headers;
  for (std::uint32_t i = 0; i < names->Length(); ++i) {
    const auto name = names->Get(context, i).ToLocalChecked();
    const auto value = Read(context, object, name);
    if (!name->IsString() || !value->IsString()) continue;
    headers.push_back({ToStdString(isolate, name), ToStdString(isolate, value)});
  }
  return headers;
}

void ReadOptions(v8::Local<v8::Context> context, v8::Local<v8::Object> options, platform::HTTPRequest& request) {
  v8::Isolate* isolate = context->GetIsolate();
  // Getters of the options' own may throw.
  const v8::TryCatch reading(isolate);
  const auto option = [&](const char* name) {
    return Read(context, options, v8::String::NewFromUtf8(isolate, name).ToLocalChecked());
  };
  const auto headers = option("headers");
  if (headers->IsObject()) request.headers = ReadHeaders(context, headers.As<v8::Object>());
  const auto method = option("method");
  if (method->IsString()) request.method = ToStdString(isolate, method);
  const auto followRedirects = option("followRedirects");
  if (followRedirects->IsBoolean()) request.followRedirects = followRedirects->IsTrue();
  const auto timeout = option("timeout");
  if (timeout->IsNumber()) request.timeout = std::chrono::duration<double>(timeout.As<v8::Number>()->Value());
}

}  // namespace

void TsCreateRequest(const ScriptArguments& args) {
  const auto context = args.GetIsolate()->GetCurrentContext();
  platform::HTTPRequest request;
  request.url = ToStdString(args.GetIsolate(), args[0]);
  if (args[1]->IsObject()) ReadOptions(context, args[1].As<v8::Object>(), request);
  v8::Local<v8::Object> object;
  if (TsNetworkRequest::New(context, std::move(request)).ToLocal(&object)) args.GetReturnValue().Set(object);
}

void isNetworkReachable(const ScriptArguments& args) { args.GetReturnValue().Set(TsIsNetworkReachable()); }
