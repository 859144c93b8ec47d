#import <Foundation/Foundation.h>

#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/TaskQueues.h"
#include "Probe.h"
#include "TessaroNative/FunctionTable.h"
#include "TessaroNative/StartUp.h"
#include "TessaroNative/TsNetworkRequest.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"
#include "Utilities/TsPageState.h"

namespace {

v8::Local<v8::Value> TextOrNull(v8::Isolate* isolate, NSString* text) {
  v8::Local<v8::String> string;
  if (!ToScriptString(isolate, text).ToLocal(&string)) return v8::Null(isolate);
  return string;
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

// ---- Page state and callback slots

id pageState() { return @[ OrNull(GetCurrentURL()), OrNull(GetCurrentWebURL()), OrNull(GetCurrentTitle()) ]; }

id currentMessageText() { return OrNull(GetCurrentMessageText()); }

void callDragAndDrop() {
  TsCallback(TsSlot::DragAndDrop).Call({@"drop", TsObjectHandle{[NSBundle mainBundle]}, @"[]"});
}

void callReachability(bool connected) { TsCallback(TsSlot::Reachability).Call({connected}); }

// From the event loop, where no script is running.
void callReachabilityLater(bool connected) {
  tessaro::platform::MainQueue::Shared().Post([connected] { callReachability(connected); });
}

void postNotification(NSString* name, id object, NSDictionary* userInfo) {
  [[NSNotificationCenter defaultCenter] postNotificationName:name object:object userInfo:userInfo];
}

void postNotificationFromThread(NSString* name, NSString* object) {
  tessaro::platform::BackgroundQueue::Shared().Post([kept = Retain(name), keptObject = Retain(object)] {
    [[NSNotificationCenter defaultCenter] postNotificationName:kept object:keptObject];
  });
}

// ---- Start-up and function table

id startUpSteps() {
  return List(StartUpSequence(), [](const StartUpStep& step) { return TsNSString(step.name); });
}

id startUpStepsRun() { return List(StartUpStepsRun(), TsNSString); }

id functionTable() {
  return List(FunctionTable(), [](const ScriptFunction& function) {
    const id conditions = List(function.contract, [](const Condition& each) { return TsNSString(each.text); });
    return @{
      @"name" : TsNSString(function.name),
      @"handlerName" : TsNSString(function.handlerName),
      @"line" : @(function.line),
      @"conditions" : conditions
    };
  });
}

void raiseException(ProbeArguments) { [NSException raise:@"TsProbeException" format:@"raised by a test"]; }

// A leak for the leak detector.
void leak() { [[[NSObject alloc] init] retain]; }

int translationState(int value, int error) { return TsTranslationState(value, error); }

bool disableGPUUnlessNative(int state) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  [defaults removeObjectForKey:@"DisableGPU"];
  TsDisableGPUUnlessNative(state);
  return [defaults boolForKey:@"DisableGPU"] != NO;
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

void captureLog() {
  // Or messages from before could still be on their way.
  TsLogFacility::Shared().Flush();
  Capturing() = std::make_shared<CapturingLogger>();
  TsLogFacility::Shared().AddLogger(Capturing());
}

void stopCapturingLog() { TsLogFacility::Shared().RemoveLogger(Capturing()); }

id capturedLog() {
  return List(Capturing()->Captures(), [](const CapturingLogger::Captured& captured) {
    const TsLogMessage& message = captured.message;
    return @{
      @"text" : TsNSString(captured.text),
      @"flag" : @(static_cast<int>(message.flag)),
      @"level" : @(static_cast<int>(message.level)),
      @"context" : @(message.context),
      @"file" : TsNSString(message.file),
      @"function" : TsNSString(message.function),
      @"line" : @(message.line),
      @"onCallersThread" : Truth(captured.onCallersThread)
    };
  });
}

// `days` from now.
void logText(int flag, std::string text, int days) {
  TsLogMessage message{.text = text,
                       .flag = static_cast<TsLogFlag>(flag),
                       .file = "tests/log.test.js",
                       .function = "void log()",
                       .line = 1};
  message.time += std::chrono::hours(24) * days;
  TsLogFacility::Shared().Log(message);
}

void logFormat(NSString* text) { TsLogWarning(@"%@\nand %d", text, 42); }

void flushLog() { TsLogFacility::Shared().Flush(); }

bool addFileLogger(std::string folder) { return TsLogFacility::Shared().AddDailyFileLogger(folder); }

// ---- Rows like those of the module's own table

constexpr ScriptFunction kRows[] = {
    {"echo", "echo", echo, Nothing::Undefined, Needs::Bridge, {CONDITION(args.Length() == 1)}},
    {"echoAutoreleased", "echoAutoreleased", echoAutoreleased, Nothing::Undefined, Needs::Foundation, {}},
    {"get", "get", nothingToDo, Nothing::False, Needs::Bridge, {CONDITION(args.Length() == 0)}},
    {"getWithPool", "getWithPool", nothingToDo, Nothing::False, Needs::Foundation, {CONDITION(args.Length() == 0)}},
};

template <std::size_t row>
void Enter(ProbeArguments args) {
  Dispatch(__FILE__, kRows[row], args);
}

// ---- The module's own rows

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
void AttachFunctions(v8::Local<v8::Object> failing, std::index_sequence<rows...>) {
  (NODE_SET_METHOD(failing, FunctionTable()[rows].name, Failing<rows>), ...);
}

template <std::size_t... rows>
void AttachRows(v8::Local<v8::Object> exports, std::index_sequence<rows...>) {
  (NODE_SET_METHOD(exports, kRows[rows].name, Enter<rows>), ...);
}

void AttachTables(v8::Local<v8::Object> exports) {
  AttachRows(exports, std::make_index_sequence<std::size(kRows)>());
  AttachFunctions(AddProbeObject(exports, "failing"), std::make_index_sequence<kFunctions>());
}

const ProbeGroup kTables("", "", {}, AttachTables);

// Whether a response's body takes this many bytes at once.
bool takesBody(double size) {
  const auto count = static_cast<std::size_t>(size);
  const TsBody::Bytes zeros(static_cast<char*>(std::calloc(count, 1)));
  return zeros != nullptr && TsBody().Append({zeros.get(), count});
}

PROBES("", takesBody, echoForeign, utf8, fromUtf8, pageState, currentMessageText, callDragAndDrop, callReachability,
       callReachabilityLater, postNotification, postNotificationFromThread, startUpSteps, startUpStepsRun,
       functionTable, leak, translationState, disableGPUUnlessNative, captureLog, stopCapturingLog, capturedLog,
       logText, logFormat, flushLog, addFileLogger);

}  // namespace
