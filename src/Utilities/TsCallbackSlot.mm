#include "Utilities/TsCallbackSlot.h"

#import <Foundation/Foundation.h>
#include <node.h>

#include <array>
#include <optional>

#include "Utilities/TsApplicationIsolate.h"
#include "Utilities/TsCallbackSetters.h"
#include "Utilities/TsScriptValues.h"

struct TsCallbackSlot::Function {
  v8::Global<v8::Value> handle;
};

namespace {

constexpr std::size_t kMostArguments = 8;

class ToScript {
 public:
  explicit ToScript(v8::Isolate* isolate) : isolate_(isolate) {}

  v8::Local<v8::Value> operator()(NSString* text) const {
    v8::Local<v8::String> string;
    if (!ToScriptString(isolate_, text).ToLocal(&string)) return v8::Null(isolate_);
    return string;
  }
  v8::Local<v8::Value> operator()(bool value) const { return v8::Boolean::New(isolate_, value); }
  v8::Local<v8::Value> operator()(TsObjectHandle handle) const { return ToBuffer(isolate_, handle.object); }

 private:
  v8::Isolate* isolate_;
};

// Node keeps its context entered while the event loop waits: only the stack tells whether script is running.
bool IsScriptRunning(v8::Isolate* isolate) {
  return v8::StackTrace::CurrentStackTrace(isolate, 1, v8::StackTrace::kScriptId)->GetFrameCount() > 0;
}

// Makes the engine ready for a call from native code. A call from the event loop, where no script is running, needs
// Node's callback scope: it drains the micro-task and next-tick queues and reports what was thrown. A call made
// while script runs must have none, or the exception would not reach that script.
class EngineEntry {
 public:
  explicit EngineEntry(v8::Isolate* isolate)
      : handles_(isolate), nested_(IsScriptRunning(isolate)), context_(GetApplicationContext()), entered_(context_) {
    if (!nested_) callback_.emplace(isolate, v8::Object::New(isolate), node::async_context{0, 0});
  }

  [[nodiscard]] v8::Local<v8::Context> context() const { return context_; }

 private:
  v8::HandleScope handles_;
  bool nested_;
  v8::Local<v8::Context> context_;
  v8::Context::Scope entered_;
  std::optional<node::CallbackScope> callback_;
};

v8::MaybeLocal<v8::Value> CallInEngine(v8::Isolate* isolate, v8::Local<v8::Context> context,
                                       v8::Local<v8::Value> function,
                                       std::initializer_list<TsScriptArgument> arguments) {
  std::array<v8::Local<v8::Value>, kMostArguments> values;
  int count = 0;
  for (const auto& argument : arguments) values[count++] = std::visit(ToScript(isolate), argument);

  if (function->IsFunction()) {
    return function.As<v8::Function>()->Call(context, v8::Null(isolate), count, values.data());
  }
  // Not a function: the engine says so, in its own words and to whoever handles its exceptions.
  v8::Local<v8::Object> object;
  if (!function->ToObject(context).ToLocal(&object)) return {};
  return object->CallAsFunction(context, v8::Null(isolate), count, values.data());
}

}  // namespace

TsCallbackSlot::TsCallbackSlot() = default;
TsCallbackSlot::~TsCallbackSlot() = default;

bool TsCallbackSlot::IsSet() const { return function_ != nullptr; }

void TsCallbackSlot::Set(v8::Local<v8::Value> function) {
  function_.reset();
  if (function.IsEmpty()) return;
  function_ = std::make_unique<Function>();
  function_->handle.Reset(GetApplicationIsolate(), function);
}

void TsCallbackSlot::Call(std::initializer_list<TsScriptArgument> arguments) const {
  v8::Isolate* isolate = GetApplicationIsolate();
  if (!IsSet() || isolate == nullptr) return;
  const EngineEntry entry(isolate);
  static_cast<void>(CallInEngine(isolate, entry.context(), function_->handle.Get(isolate), arguments).IsEmpty());
}

NSString* TsCallbackSlot::CallForString(std::initializer_list<TsScriptArgument> arguments) const {
  v8::Isolate* isolate = GetApplicationIsolate();
  if (!IsSet() || isolate == nullptr) return nil;
  const EngineEntry entry(isolate);
  v8::Local<v8::Value> result;
  if (!CallInEngine(isolate, entry.context(), function_->handle.Get(isolate), arguments).ToLocal(&result)) return nil;
  return convertToNSString(result);
}

TsCallbackSlots& TsCallbackSlots::Shared() {
  static TsCallbackSlots slots;
  return slots;
}

void TsCallbackSlots::Clear() {
  for (TsCallbackSlot* slot :
       {&currentState, &composeOutgoingMessage, &searchService, &reachability, &windowNotification, &queryWindowTrait,
        &dragAndDrop, &keyboardModifierKeys, &notificationActivation, &statusItemMenuNeedsUpdate, &appcastParameter,
        &toolbarValidation, &toolbarAction, &toolbarAddTab}) {
    slot->Set({});
  }
}

void SetCurrentStateCallbackFunction(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().currentState.Set(function);
}

void SetComposeOutgoingMessageCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().composeOutgoingMessage.Set(function);
}

void SetSearchServiceCallback(v8::Local<v8::Value> function) { TsCallbackSlots::Shared().searchService.Set(function); }

void SetNetworkReachabilityCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().reachability.Set(function);
}

void SetWindowNotificationCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().windowNotification.Set(function);
}

void SetQueryWindowTraitCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().queryWindowTrait.Set(function);
}

void SetDragAndDropCallback(v8::Local<v8::Value> function) { TsCallbackSlots::Shared().dragAndDrop.Set(function); }

void SetKeyboardModifierKeysCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().keyboardModifierKeys.Set(function);
}

void SetNotificationActivationCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().notificationActivation.Set(function);
}

void SetStatusItemMenuNeedsUpdateCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().statusItemMenuNeedsUpdate.Set(function);
}

void SetAppcastParameterCallback(v8::Local<v8::Value> function) {
  TsCallbackSlots::Shared().appcastParameter.Set(function);
}

void SetToolbarCallbacks(v8::Local<v8::Value> validation, v8::Local<v8::Value> action, v8::Local<v8::Value> addTab) {
  TsCallbackSlots& slots = TsCallbackSlots::Shared();
  slots.toolbarValidation.Set(validation);
  slots.toolbarAction.Set(action);
  slots.toolbarAddTab.Set(addTab);
}
