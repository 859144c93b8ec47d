#pragma once

#include <node.h>

#include <list>
#include <memory>

#include "Network/TsNetwork.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsEventEmitter.h"

// A request as script sees it: an object with the methods "on" and "start", which hands the request's events to the
// listeners that "on" has registered.
//
// Lives exactly as long as its script object: when the engine collects the object, a running request is cancelled. The
// listeners are released at the end of the request.
class NetworkRequestObject final : TsNetworkRequestListener {
 public:
  // A new script object; its native half belongs to it. Empty when the engine can't make one.
  [[nodiscard]] static v8::MaybeLocal<v8::Object> New(v8::Local<v8::Context> context,
                                                      tessaro::platform::HTTPRequest request);

  // For New().
  NetworkRequestObject(tessaro::platform::HTTPRequest request, v8::Isolate* isolate, v8::Local<v8::Object> object);

 private:
  struct Living;

  static v8::Local<v8::FunctionTemplate> MakeTemplate(v8::Isolate* isolate);
  static NetworkRequestObject* ReceiverOf(const ScriptArguments& args);
  static void On(const ScriptArguments& args);
  static void Start(const ScriptArguments& args);
  static void Collected(const v8::WeakCallbackInfo<NetworkRequestObject>& info);

  void Response(int statusCode, std::optional<std::string_view> location) override;
  void Data(std::span<const char> bytes) override;
  void End(TsBody body) override;
  void Error(std::string_view description) override;

  [[nodiscard]] TsEventEmitter* EmitterNamed(std::string_view eventName);
  void Clear();

  v8::Global<v8::Object> object_;
  TsEventEmitter error_;
  TsEventEmitter response_;
  TsEventEmitter data_;
  TsEventEmitter end_;
  TsNetworkRequest request_;
  std::list<std::unique_ptr<NetworkRequestObject>>::iterator place_;
};
