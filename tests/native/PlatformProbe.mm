#include "PlatformProbe.h"

#import <Foundation/Foundation.h>

#include <memory>
#include <thread>

#include "Base/TsString.h"
#include "Platform/BackgroundQueue.h"
#include "Platform/MainQueue.h"
#include "Platform/OperatingSystem.h"
#include "Platform/StandardDirectories.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

using Function = std::shared_ptr<v8::Global<v8::Function>>;

std::string StdText(v8::Local<v8::Value> value) {
  const v8::String::Utf8Value utf8(v8::Isolate::GetCurrent(), value);
  return {*utf8, static_cast<std::size_t>(utf8.length())};
}

v8::Local<v8::String> Text(std::string_view text) {
  return v8::String::NewFromUtf8(v8::Isolate::GetCurrent(), text.data(), v8::NewStringType::kNormal,
                                 static_cast<int>(text.size()))
      .ToLocalChecked();
}

int Integer(v8::Local<v8::Value> value) {
  return value->Int32Value(v8::Isolate::GetCurrent()->GetCurrentContext()).FromMaybe(0);
}

Function Keep(v8::Local<v8::Value> function) {
  return std::make_shared<v8::Global<v8::Function>>(v8::Isolate::GetCurrent(), function.As<v8::Function>());
}

void CallFromLoop(const Function& function, std::string_view argument) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  const auto local = function->Get(isolate);
  const auto context = local->GetCreationContext().ToLocalChecked();
  const v8::Context::Scope entered(context);
  v8::Local<v8::Value> argv[] = {Text(argument)};
  static_cast<void>(node::MakeCallback(isolate, context->Global(), local, 1, argv, {0, 0}));
}

void post(ProbeArguments args) {
  platform::MainQueue::Shared().Post(
      [function = Keep(args[0])] { CallFromLoop(function, platform::MainQueue::IsMainThread() ? "main" : "other"); });
}

void postDelayed(ProbeArguments args) {
  platform::MainQueue::Shared().PostDelayed(std::chrono::milliseconds(Integer(args[0])),
                                            [function = Keep(args[1])] { CallFromLoop(function, ""); });
}

// `count` posts from each of four threads; the function gets "thread:number" of each.
void postFromThreads(ProbeArguments args) {
  const Function function = Keep(args[1]);
  for (int thread = 0; thread < 4; ++thread) {
    std::thread([thread, function, count = Integer(args[0])] {
      for (int i = 0; i < count; ++i) {
        platform::MainQueue::Shared().Post(
            [=] { CallFromLoop(function, std::to_string(thread) + ":" + std::to_string(i)); });
      }
    }).detach();
  }
}

void background(ProbeArguments args) {
  platform::BackgroundQueue::Shared().Post(
      [function = Keep(args[1]), pause = std::chrono::milliseconds(Integer(args[0]))] {
        std::this_thread::sleep_for(pause);
        const bool isMain = platform::MainQueue::IsMainThread();
        platform::MainQueue::Shared().Post([=] { CallFromLoop(function, isMain ? "main" : "other"); });
      });
}

// Waits for the end of the process with a task that posts when it is destroyed.
void postFromDestructor(ProbeArguments) {
  struct Poster {
    ~Poster() {
      platform::MainQueue::Shared().Post([] {});
    }
  };
  const auto poster = std::make_shared<Poster>();
  platform::MainQueue::Shared().PostDelayed(std::chrono::hours(1), [poster] {});
}

void raiseOnMainQueue(ProbeArguments) {
  platform::MainQueue::Shared().Post([] { [NSException raise:@"TsProbe" format:@"raised by a test"]; });
}

void kernelVariable(ProbeArguments args) {
  const auto variable = platform::ReadKernelVariable(StdText(args[0]));
  args.GetReturnValue().Set(variable.error == 0 ? variable.value : -variable.error);
}

void logDirectory(ProbeArguments args) {
  args.GetReturnValue().Set(Text(platform::LogDirectory(StdText(args[0])).string()));
}

void version(ProbeArguments args) { args.GetReturnValue().Set(Text(platform::Version())); }

void preferredLanguages(ProbeArguments args) {
  args.GetReturnValue().Set(Text(TsStdString([[NSLocale preferredLanguages] componentsJoinedByString:@","])));
}

}  // namespace

void AttachPlatformProbe(v8::Local<v8::Object> exports) {
  PROBE(post);
  PROBE(postDelayed);
  PROBE(postFromThreads);
  PROBE(background);
  PROBE(postFromDestructor);
  PROBE(raiseOnMainQueue);
  PROBE(kernelVariable);
  PROBE(logDirectory);
  PROBE(version);
  PROBE(preferredLanguages);
}
