#pragma once

#include <node.h>

#include <cstddef>
#include <cstdlib>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Base/Owned.h"
#include "Platform/HTTPTransfer.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsEngineEntry.h"

// The body of a response: a piece of memory that grows with what arrives.
class TsBody {
 public:
  using Bytes = Owned<char, std::free>;

  // False, and nothing appended, beyond 1 GiB and when there is not enough memory.
  [[nodiscard]] bool Append(std::span<const char> piece) noexcept;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::span<const char> First(std::size_t count) const { return {bytes_.get(), count}; }

  // Hands the memory over, shrunk to the body's size; nullptr for an empty body.
  [[nodiscard]] Bytes Release() noexcept;

 private:
  [[nodiscard]] bool Resize(std::size_t capacity) noexcept;

  Bytes bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

// The script functions that listen to one event, in the order of registration.
class TsEventEmitter {
 public:
  [[nodiscard]] bool IsEmpty() const { return listeners_.empty(); }

  // Any value may be added, also several times; one that is not a function fails inside the engine when it is called.
  void Add(v8::Isolate* isolate, v8::Local<v8::Value> listener) { listeners_.emplace_back(isolate, listener); }

  // Calls every listener in the order of registration, with `value` and the receiver null, but none that is added
  // during the call. An exception of one is an uncaught exception; the others are called all the same.
  void Emit(const TsEngineEntry& entry, v8::Local<v8::Value> value) const {
    const std::size_t registered = listeners_.size();
    for (std::size_t i = 0; i < registered && i < listeners_.size(); ++i) {
      static_cast<void>(entry.Call(listeners_[i].Get(entry.isolate()), 1, &value).IsEmpty());
    }
  }

  void Clear() { listeners_.clear(); }

 private:
  std::vector<v8::Global<v8::Value>> listeners_;
};

// One HTTP request, outside the browser engine and without cookies, as script sees it: an object with the methods "on"
// and "start", which hands the request's events to the listeners that "on" has registered: a response for a refused
// redirect and one for the final response, data, then exactly one end or error. After that the request can't be started
// again; until then a start begins it anew, with a new connection and an empty body.
//
// Lives exactly as long as its script object: when the engine collects the object, a running request is cancelled. The
// listeners are released at the end of the request.
class TsNetworkRequest final : tessaro::platform::HTTPTransferClient {
 public:
  // A new script object; its native half belongs to it. Empty when the engine can't make one.
  [[nodiscard]] static v8::MaybeLocal<v8::Object> New(v8::Local<v8::Context> context,
                                                      tessaro::platform::HTTPRequest request);

  // For New().
  TsNetworkRequest(tessaro::platform::HTTPRequest request, v8::Isolate* isolate, v8::Local<v8::Object> object);

 private:
  struct Living;

  static v8::Local<v8::FunctionTemplate> MakeTemplate(v8::Isolate* isolate);
  static TsNetworkRequest* ReceiverOf(const ScriptArguments& args);
  static void On(const ScriptArguments& args);
  static void Start(const ScriptArguments& args);
  static void Collected(const v8::WeakCallbackInfo<TsNetworkRequest>& info);

  [[nodiscard]] bool Keep(std::span<const char> piece) noexcept override;
  void RefusedRedirect(int statusCode, std::string_view location) noexcept override;
  void ReceivedResponse(int statusCode) noexcept override;
  void ReceivedData(std::size_t length) noexcept override;
  void Ended(Result<void> result) noexcept override;

  void Respond(int statusCode, std::optional<std::string_view> location);
  [[nodiscard]] TsEventEmitter* EmitterNamed(std::string_view eventName);

  v8::Global<v8::Object> object_;
  TsEventEmitter error_;
  TsEventEmitter response_;
  TsEventEmitter data_;
  TsEventEmitter end_;
  std::optional<tessaro::platform::HTTPRequest> request_;
  TsBody body_;
  std::unique_ptr<tessaro::platform::HTTPTransfer> transfer_;
  std::list<std::unique_ptr<TsNetworkRequest>>::iterator place_;
};
