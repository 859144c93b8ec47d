#include "TessaroNative/TsNetworkRequest.h"

#include <node_buffer.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "Base/Lifetime.h"

namespace platform = tessaro::platform;

namespace {

constexpr std::size_t kInitialCapacity = 1024;
// A server may never end its body, and engines stop the process for an ArrayBuffer of 4 GiB.
constexpr std::size_t kMostBytes = 1 << 30;

constexpr int kNativeField = 0;
// Up to this size the engine's own memory is cheaper than foreign memory that it has to keep track of. A sandboxed
// engine takes no foreign memory at all.
#ifdef V8_ENABLE_SANDBOX
constexpr std::size_t kMostInEngine = SIZE_MAX;
#else
constexpr std::size_t kMostInEngine = 16 * 1024;
#endif

v8::Local<v8::String> Name(v8::Isolate* isolate, const char* name) {
  return v8::String::NewFromUtf8(isolate, name, v8::NewStringType::kInternalized).ToLocalChecked();
}

v8::Local<v8::Value> Text(v8::Isolate* isolate, std::string_view text) {
  v8::Local<v8::String> string;
  const auto made =
      v8::String::NewFromUtf8(isolate, text.data(), v8::NewStringType::kNormal, static_cast<int>(text.size()));
  if (!made.ToLocal(&string)) return v8::String::Empty(isolate);
  return string;
}

v8::Local<v8::ArrayBuffer> MoveToScript(v8::Isolate* isolate, TsBody::Bytes bytes, std::size_t size) {
  const auto free = [](void* moved, std::size_t, void*) { std::free(moved); };
  return v8::ArrayBuffer::New(isolate, v8::ArrayBuffer::NewBackingStore(bytes.release(), size, free, nullptr));
}

// The engine's own memory, which it collects early when much of it is garbage. Unlike a new ArrayBuffer's, a Node.js
// buffer's isn't filled with zeros first.
v8::Local<v8::ArrayBuffer> CopyToScript(v8::Isolate* isolate, std::span<const char> bytes) {
  v8::Local<v8::Object> view;
  if (bytes.empty() || !node::Buffer::New(isolate, bytes.size()).ToLocal(&view)) {
    return v8::ArrayBuffer::New(isolate, 0);
  }
  std::memcpy(node::Buffer::Data(view), bytes.data(), bytes.size());
  return view.As<v8::Uint8Array>()->Buffer();
}

v8::Local<v8::ArrayBuffer> MoveToScript(v8::Isolate* isolate, TsBody body) {
  const std::size_t size = body.size();
  if (size <= kMostInEngine) return CopyToScript(isolate, body.First(size));
  return MoveToScript(isolate, body.Release(), size);
}

}  // namespace

bool TsBody::Append(std::span<const char> piece) noexcept {
  // memcpy() must not be given null, even for no bytes.
  if (piece.empty()) return true;
  if (piece.size() > kMostBytes - size_) return false;
  if (piece.size() > capacity_ - size_) {
    if (!Resize(std::max({kInitialCapacity, capacity_ * 2, size_ + piece.size()}))) return false;
  }
  std::memcpy(bytes_.get() + size_, piece.data(), piece.size());
  size_ += piece.size();
  return true;
}

TsBody::Bytes TsBody::Release() noexcept {
  if (size_ > 0 && size_ < capacity_ / 2) static_cast<void>(Resize(size_));
  size_ = capacity_ = 0;
  return std::move(bytes_);
}

bool TsBody::Resize(std::size_t capacity) noexcept {
  // realloc() moves large blocks by their page tables, which no container does.
  auto* moved = static_cast<char*>(std::realloc(bytes_.get(), capacity));
  if (moved == nullptr) return false;
  static_cast<void>(bytes_.release());
  bytes_.reset(moved);
  capacity_ = capacity;
  return true;
}

// The native halves of all script objects, and the template of those.
struct TsNetworkRequest::Living {
  v8::Global<v8::FunctionTemplate> maker;
  std::list<std::unique_ptr<TsNetworkRequest>> objects;

  static Living& Shared() {
    static Forever<Living> living;
    return *living;
  }

  static constexpr EndStage kEnd = EndStage::Script;
  void Close() {
    objects.clear();
    maker.Reset();
  }
};

v8::MaybeLocal<v8::Object> TsNetworkRequest::New(v8::Local<v8::Context> context,
                                                 tessaro::platform::HTTPRequest request) {
  v8::Isolate* isolate = context->GetIsolate();
  Living& living = Living::Shared();
  if (living.maker.IsEmpty()) living.maker.Reset(isolate, MakeTemplate(isolate));

  v8::Local<v8::Object> object;
  if (!living.maker.Get(isolate)->InstanceTemplate()->NewInstance(context).ToLocal(&object)) return {};
  auto& made = living.objects.emplace_front(std::make_unique<TsNetworkRequest>(std::move(request), isolate, object));
  made->place_ = living.objects.begin();
  return object;
}

TsNetworkRequest::TsNetworkRequest(tessaro::platform::HTTPRequest request, v8::Isolate* isolate,
                                   v8::Local<v8::Object> object)
    : object_(isolate, object), request_(std::move(request)) {
  object->SetAlignedPointerInInternalField(kNativeField, this);
  object_.SetWeak(this, Collected, v8::WeakCallbackType::kParameter);
}

v8::Local<v8::FunctionTemplate> TsNetworkRequest::MakeTemplate(v8::Isolate* isolate) {
  const auto maker = v8::FunctionTemplate::New(isolate);
  const auto instance = maker->InstanceTemplate();
  instance->SetInternalFieldCount(1);
  instance->Set(Name(isolate, "on"), v8::FunctionTemplate::New(isolate, On));
  instance->Set(Name(isolate, "start"), v8::FunctionTemplate::New(isolate, Start));
  return maker;
}

// nullptr when the method was taken from a request and called on something else.
TsNetworkRequest* TsNetworkRequest::ReceiverOf(const ScriptArguments& args) {
  const auto maker = Living::Shared().maker.Get(args.GetIsolate());
  if (maker.IsEmpty() || !maker->HasInstance(args.This())) return nullptr;
  return static_cast<TsNetworkRequest*>(args.This()->GetAlignedPointerFromInternalField(kNativeField));
}

void TsNetworkRequest::On(const ScriptArguments& args) {
  TsNetworkRequest* self = ReceiverOf(args);
  if (self == nullptr || args.Length() != 2) return;
  v8::Isolate* isolate = args.GetIsolate();
  // An object's toString() may throw; then no event has that name.
  const v8::TryCatch conversion(isolate);
  const v8::String::Utf8Value name(isolate, args[0]);
  if (*name == nullptr) return;
  TsEventEmitter* emitter = self->EmitterNamed({*name, static_cast<std::size_t>(name.length())});
  if (emitter != nullptr) emitter->Add(isolate, args[1]);
}

void TsNetworkRequest::Start(const ScriptArguments& args) {
  TsNetworkRequest* self = ReceiverOf(args);
  if (self == nullptr || !self->request_) return;
  self->transfer_.reset();
  self->body_ = {};
  self->transfer_ = platform::HTTPTransfer::Start(*self->request_, *self);
}

void TsNetworkRequest::Collected(const v8::WeakCallbackInfo<TsNetworkRequest>& info) {
  info.GetParameter()->object_.Reset();
  // The first pass may only reset the handle.
  info.SetSecondPassCallback([](const v8::WeakCallbackInfo<TsNetworkRequest>& later) {
    Living::Shared().objects.erase(later.GetParameter()->place_);
  });
}

TsEventEmitter* TsNetworkRequest::EmitterNamed(std::string_view eventName) {
  if (eventName == "response") return &response_;
  if (eventName == "data") return &data_;
  if (eventName == "error") return &error_;
  if (eventName == "end") return &end_;
  return nullptr;
}

// ---- Events

bool TsNetworkRequest::Keep(std::span<const char> piece) noexcept { return body_.Append(piece); }

void TsNetworkRequest::RefusedRedirect(int statusCode, std::string_view location) noexcept {
  Respond(statusCode, location);
}

void TsNetworkRequest::ReceivedResponse(int statusCode) noexcept { Respond(statusCode, std::nullopt); }

void TsNetworkRequest::Respond(int statusCode, std::optional<std::string_view> location) {
  if (object_.IsEmpty()) return;
  const TsEngineEntry entry(GetApplicationIsolate());
  v8::Isolate* isolate = entry.isolate();
  const auto object = object_.Get(isolate);
  const auto set = [&](const char* name, v8::Local<v8::Value> value) {
    static_cast<void>(object->Set(entry.context(), Name(isolate, name), value).IsNothing());
  };
  set("statusCode", v8::Integer::New(isolate, statusCode));
  if (location) set("location", Text(isolate, *location));
  response_.Emit(entry, object);
}

// Every listener gets the first bytes of the body, not the latest: only the end has the whole body.
void TsNetworkRequest::ReceivedData(std::size_t length) noexcept {
  if (object_.IsEmpty() || data_.IsEmpty()) return;
  const TsEngineEntry entry(GetApplicationIsolate());
  [[maybe_unused]] const auto keptMeanwhile = object_.Get(entry.isolate());
  data_.Emit(entry, CopyToScript(entry.isolate(), body_.First(length)));
}

void TsNetworkRequest::Ended(Result<void> result) noexcept {
  TsBody body = std::exchange(body_, {});
  transfer_.reset();
  request_.reset();
  if (object_.IsEmpty()) return;
  const TsEngineEntry entry(GetApplicationIsolate());
  v8::Isolate* isolate = entry.isolate();
  const auto object = object_.Get(isolate);
  if (result) {
    const auto buffer = MoveToScript(isolate, std::move(body));
    static_cast<void>(object->Set(entry.context(), Name(isolate, "buffer"), buffer).IsNothing());
    end_.Emit(entry, object);
  } else {
    error_.Emit(entry, Text(isolate, result.error().message));
  }
  for (TsEventEmitter* emitter : {&response_, &error_, &data_, &end_}) emitter->Clear();
}
