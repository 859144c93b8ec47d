#import <Foundation/Foundation.h>

#include <node_buffer.h>

#include <array>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/BackgroundQueue.h"
#include "Platform/MainQueue.h"
#include "Probe.h"
#include "TessaroNative/Dispatch.h"
#include "TessaroNative/StartUp.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsPageState.h"
#include "Utilities/TsScriptValues.h"

namespace {

v8::Local<v8::Value> Text(v8::Isolate* isolate, std::string_view text) {
  return v8::String::NewFromUtf8(isolate, text.data(), v8::NewStringType::kNormal, static_cast<int>(text.size()))
      .ToLocalChecked();
}

v8::Local<v8::Value> TextOrNull(v8::Isolate* isolate, NSString* text) {
  v8::Local<v8::String> string;
  if (!ToScriptString(isolate, text).ToLocal(&string)) return v8::Null(isolate);
  return string;
}

void Set(v8::Local<v8::Object> object, const char* key, v8::Local<v8::Value> value) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  object->Set(isolate->GetCurrentContext(), Text(isolate, key), value).Check();
}

template <typename Range, typename Convert>
v8::Local<v8::Array> List(v8::Isolate* isolate, const Range& range, Convert convert) {
  const auto list = v8::Array::New(isolate);
  std::uint32_t index = 0;
  for (const auto& element : range) {
    list->Set(isolate->GetCurrentContext(), index++, convert(element)).Check();
  }
  return list;
}

int Integer(v8::Local<v8::Value> value) {
  return value->Int32Value(v8::Isolate::GetCurrent()->GetCurrentContext()).FromMaybe(0);
}

std::string StdText(v8::Local<v8::Value> value) {
  const v8::String::Utf8Value utf8(v8::Isolate::GetCurrent(), value);
  return {*utf8, static_cast<std::size_t>(utf8.length())};
}

// ---- Values

void echo(ProbeArguments args) {
  v8::Isolate* isolate = args.GetIsolate();
  v8::Local<v8::String> result;
  if (ToScriptString(isolate, TsCopyString(isolate, args[0])).ToLocal(&result)) args.GetReturnValue().Set(result);
}

void echoAutoreleased(ProbeArguments args) {
  args.GetReturnValue().Set(TextOrNull(args.GetIsolate(), convertToNSString(args[0])));
}

// Through a string of Foundation's own making, as Cocoa calls return them.
void echoForeign(ProbeArguments args) {
  NSString* text = convertToNSString(args[0]);
  std::vector<unichar> characters([text length]);
  [text getCharacters:characters.data() range:NSMakeRange(0, characters.size())];
  const auto foreign = Adopt([[NSString alloc] initWithCharacters:characters.data() length:characters.size()]);
  args.GetReturnValue().Set(TextOrNull(args.GetIsolate(), foreign));
}

void utf8(ProbeArguments args) {
  const std::string text = TsStdString(convertToNSString(args[0]));
  args.GetReturnValue().Set(node::Buffer::Copy(args.GetIsolate(), text.data(), text.size()).ToLocalChecked());
}

void fromUtf8(ProbeArguments args) {
  const std::string_view bytes(node::Buffer::Data(args[0]), node::Buffer::Length(args[0]));
  args.GetReturnValue().Set(TextOrNull(args.GetIsolate(), TsNSString(bytes)));
}

void nothingToDo(ProbeArguments args) { args.GetReturnValue().Set(true); }

void handleOfBundle(ProbeArguments args) {
  args.GetReturnValue().Set(ToBuffer(args.GetIsolate(), [NSBundle mainBundle]));
}

void describeHandle(ProbeArguments args) {
  const id object = ToObjcObject(args[0]);
  args.GetReturnValue().Set(object == nil                     ? Text(args.GetIsolate(), "nil")
                            : object == [NSBundle mainBundle] ? Text(args.GetIsolate(), "main bundle")
                                                              : Text(args.GetIsolate(), "other"));
}

void copyData(ProbeArguments args) {
  const auto data = convertToNSData(args[0]);
  args.GetReturnValue().Set(
      node::Buffer::Copy(args.GetIsolate(), static_cast<const char*>([data bytes]), [data length]).ToLocalChecked());
}

// ---- Page state and callback slots

void pageState(ProbeArguments args) {
  v8::Isolate* isolate = args.GetIsolate();
  args.GetReturnValue().Set(List(isolate, std::array{GetCurrentURL(), GetCurrentWebURL(), GetCurrentTitle()},
                                 [&](NSString* text) { return TextOrNull(isolate, text); }));
}

void currentMessageText(ProbeArguments args) {
  args.GetReturnValue().Set(TextOrNull(args.GetIsolate(), GetCurrentMessageText()));
}

void callDragAndDrop(ProbeArguments) {
  TsCallback(TsSlot::DragAndDrop).Call({@"drop", TsObjectHandle{[NSBundle mainBundle]}, @"[]"});
}

void callReachability(ProbeArguments args) { TsCallback(TsSlot::Reachability).Call({args[0]->IsTrue()}); }

// Calls the slot from the event loop, where no script is running.
void callReachabilityLater(ProbeArguments args) {
  tessaro::platform::MainQueue::Shared().Post(
      [connected = args[0]->IsTrue()] { TsCallback(TsSlot::Reachability).Call({connected}); });
}

void callDragAndDropLater(ProbeArguments) {
  tessaro::platform::MainQueue::Shared().Post([] { TsCallback(TsSlot::DragAndDrop).Call({@"drop"}); });
}

void postNotification(ProbeArguments args) {
  NSString* name = convertToNSString(args[0]);
  NSString* object = convertToNSString(args[1]);
  NSString* info = convertToNSString(args[2]);
  NSDictionary* userInfo = info == nil ? nil : TsConvertFromJSONString(info, nullptr);
  [[NSNotificationCenter defaultCenter] postNotificationName:name object:object userInfo:userInfo];
}

void postNotificationFromThread(ProbeArguments args) {
  tessaro::platform::BackgroundQueue::Shared().Post(
      [name = TsCopyString(args.GetIsolate(), args[0]), object = TsCopyString(args.GetIsolate(), args[1])] {
        [[NSNotificationCenter defaultCenter] postNotificationName:name object:object];
      });
}

// ---- Start-up and function table

void startUpSteps(ProbeArguments args) {
  args.GetReturnValue().Set(List(args.GetIsolate(), StartUpSequence(),
                                 [&](const StartUpStep& step) { return Text(args.GetIsolate(), step.name); }));
}

void startUpStepsRun(ProbeArguments args) {
  args.GetReturnValue().Set(
      List(args.GetIsolate(), StartUpStepsRun(), [&](const char* name) { return Text(args.GetIsolate(), name); }));
}

void functionTable(ProbeArguments args) {
  v8::Isolate* isolate = args.GetIsolate();
  args.GetReturnValue().Set(List(isolate, FunctionTable(), [&](const ScriptFunction& function) {
    const auto row = v8::Object::New(isolate);
    Set(row, "name", Text(isolate, function.name));
    Set(row, "handlerName", Text(isolate, function.handlerName));
    Set(row, "line", v8::Integer::New(isolate, function.line));
    Set(row, "needsWindowServer", v8::Boolean::New(isolate, function.needs == Needs::WindowServer));
    Set(row, "conditions",
        List(isolate, function.contract, [&](const Condition& condition) { return Text(isolate, condition.Text()); }));
    return row;
  }));
}

void raiseException(ProbeArguments) { [NSException raise:@"TsProbeException" format:@"raised by a test"]; }

// What the leak detector has to find.
void leak(ProbeArguments) { [[[NSObject alloc] init] retain]; }

void translationState(ProbeArguments args) {
  args.GetReturnValue().Set(TsTranslationState(Integer(args[0]), Integer(args[1])));
}

void disableGPUUnlessNative(ProbeArguments args) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  [defaults removeObjectForKey:@"DisableGPU"];
  TsDisableGPUUnlessNative(Integer(args[0]));
  args.GetReturnValue().Set(static_cast<bool>([defaults boolForKey:@"DisableGPU"]));
}

// ---- Logging

class CapturingLogger final : public TsLogger {
 public:
  struct Captured {
    std::string text;
    TsLogMessage message;
    bool onCallersThread;
  };

  void Log(const TsLogMessage& message) noexcept override {
    const std::lock_guard lock(mutex_);
    captured_.push_back({std::string(message.text), message, std::this_thread::get_id() == caller_});
  }

  [[nodiscard]] std::vector<Captured> Captures() const {
    const std::lock_guard lock(mutex_);
    return captured_;
  }

 private:
  const std::thread::id caller_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::vector<Captured> captured_;
};

std::shared_ptr<CapturingLogger>& Capturing() {
  static std::shared_ptr<CapturingLogger> logger;
  return logger;
}

void captureLog(ProbeArguments) {
  // Or messages from before could still be on their way.
  TsLogFacility::Shared().Flush();
  Capturing() = std::make_shared<CapturingLogger>();
  TsLogFacility::Shared().AddLogger(Capturing());
}

void stopCapturingLog(ProbeArguments) { TsLogFacility::Shared().RemoveLogger(Capturing()); }

void capturedLog(ProbeArguments args) {
  v8::Isolate* isolate = args.GetIsolate();
  args.GetReturnValue().Set(List(isolate, Capturing()->Captures(), [&](const CapturingLogger::Captured& captured) {
    const auto entry = v8::Object::New(isolate);
    Set(entry, "text", Text(isolate, captured.text));
    Set(entry, "flag", v8::Integer::New(isolate, static_cast<int>(captured.message.flag)));
    Set(entry, "level", v8::Integer::New(isolate, static_cast<int>(captured.message.level)));
    Set(entry, "context", v8::Integer::New(isolate, captured.message.context));
    Set(entry, "file", Text(isolate, captured.message.file));
    Set(entry, "function", Text(isolate, captured.message.function));
    Set(entry, "line", v8::Integer::New(isolate, captured.message.line));
    Set(entry, "onCallersThread", v8::Boolean::New(isolate, captured.onCallersThread));
    return entry;
  }));
}

void log(ProbeArguments args) {
  const std::string text = StdText(args[1]);
  TsLogMessage message{.text = text,
                       .flag = static_cast<TsLogFlag>(Integer(args[0])),
                       .file = "tests/log.test.js",
                       .function = "void log()",
                       .line = 1};
  message.time += std::chrono::hours(24) * Integer(args[2]);
  TsLogFacility::Shared().Log(message);
}

void logFormat(ProbeArguments args) { TsLogWarning(@"%@\nand %d", convertToNSString(args[0]), 42); }

void flushLog(ProbeArguments) { TsLogFacility::Shared().Flush(); }

void addFileLogger(ProbeArguments args) {
  args.GetReturnValue().Set(TsLogFacility::Shared().AddDailyFileLogger(StdText(args[0])));
}

// ---- Rows like those of the module's own table

constexpr ScriptFunction kRows[] = {
    {"echo", "echo", echo, Nothing::Undefined, Needs::Bridge, {Exactly(1)}},
    {"echoAutoreleased", "echoAutoreleased", echoAutoreleased, Nothing::Undefined, Needs::Foundation, {}},
    {"get", "get", nothingToDo, Nothing::False, Needs::Bridge, {Exactly(0)}},
    {"getWithPool", "getWithPool", nothingToDo, Nothing::False, Needs::Foundation, {Exactly(0)}},
    {"raiseUndefined", "raiseException", raiseException, Nothing::Undefined, Needs::Foundation, {}},
    {"raiseNull", "raiseException", raiseException, Nothing::Null, Needs::Foundation, {}},
    {"raiseFalse", "raiseException", raiseException, Nothing::False, Needs::Foundation, {}},
    {"raiseZero", "raiseException", raiseException, Nothing::Zero, Needs::Foundation, {}},
    {"raiseEmptyText", "raiseException", raiseException, Nothing::EmptyText, Needs::Foundation, {}},
    {"raiseEmptyArray", "raiseException", raiseException, Nothing::EmptyArray, Needs::Foundation, {}},
    {"windowOnly", "windowOnly", nothingToDo, Nothing::Null, Needs::WindowServer, {}},
    {"violate", "violate", nothingToDo, Nothing::Null, Needs::Bridge, {Exactly(1), Arg(0).IsStringOrNull()}},
};

template <std::size_t row>
void Enter(ProbeArguments args) {
  Dispatch(__FILE__, kRows[row], args);
}

// ---- The module's own rows

// The text of the first condition that the arguments violate, or null.
template <std::size_t row>
void Violated(ProbeArguments args) {
  const Condition* violated = FunctionTable()[row].contract.Violated(args);
  if (violated == nullptr) return args.GetReturnValue().SetNull();
  args.GetReturnValue().Set(Text(args.GetIsolate(), violated->Text()));
}

// The row with a handler that fails.
template <std::size_t row>
void Failing(ProbeArguments args) {
  ScriptFunction function = FunctionTable()[row];
  function.handler = raiseException;
  function.needs = Needs::Foundation;
  Dispatch(__FILE__, function, args);
}

constexpr std::size_t kFunctions = 112;

template <std::size_t... rows>
void AttachFunctions(v8::Local<v8::Object> violated, v8::Local<v8::Object> failing, std::index_sequence<rows...>) {
  (NODE_SET_METHOD(violated, FunctionTable()[rows].name, Violated<rows>), ...);
  (NODE_SET_METHOD(failing, FunctionTable()[rows].name, Failing<rows>), ...);
}

template <std::size_t... rows>
void AttachRows(v8::Local<v8::Object> exports, std::index_sequence<rows...>) {
  (NODE_SET_METHOD(exports, kRows[rows].name, Enter<rows>), ...);
}

}  // namespace

void AttachCoreProbe(v8::Local<v8::Object> exports) {
  AttachRows(exports, std::make_index_sequence<std::size(kRows)>());
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const auto violated = v8::Object::New(isolate);
  const auto failing = v8::Object::New(isolate);
  AttachFunctions(violated, failing, std::make_index_sequence<kFunctions>());
  Set(exports, "violated", violated);
  Set(exports, "failing", failing);
  PROBE(echoForeign);
  PROBE(utf8);
  PROBE(fromUtf8);
  PROBE(handleOfBundle);
  PROBE(describeHandle);
  PROBE(copyData);
  PROBE(pageState);
  PROBE(currentMessageText);
  PROBE(callDragAndDrop);
  PROBE(callDragAndDropLater);
  PROBE(callReachability);
  PROBE(callReachabilityLater);
  PROBE(postNotification);
  PROBE(postNotificationFromThread);
  PROBE(startUpSteps);
  PROBE(startUpStepsRun);
  PROBE(functionTable);
  PROBE(leak);
  PROBE(translationState);
  PROBE(disableGPUUnlessNative);
  PROBE(captureLog);
  PROBE(stopCapturingLog);
  PROBE(capturedLog);
  PROBE(log);
  PROBE(logFormat);
  PROBE(flushLog);
  PROBE(addFileLogger);
}
