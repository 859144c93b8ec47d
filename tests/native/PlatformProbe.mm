#import <Foundation/Foundation.h>

#include <memory>
#include <thread>

#include "Platform/BackgroundQueue.h"
#include "Platform/MainQueue.h"
#include "Platform/OperatingSystem.h"
#include "Platform/StandardDirectories.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

using Function = std::shared_ptr<v8::Global<v8::Function>>;

Function Keep(v8::Local<v8::Value> function) {
  return std::make_shared<v8::Global<v8::Function>>(v8::Isolate::GetCurrent(), function.As<v8::Function>());
}

void CallFromLoop(const Function& function, std::string_view argument) {
  v8::Isolate* isolate = v8::Isolate::GetCurrent();
  const v8::HandleScope handles(isolate);
  const auto local = function->Get(isolate);
  const auto context = local->GetCreationContext().ToLocalChecked();
  const v8::Context::Scope entered(context);
  v8::Local<v8::Value> argv[] = {ScriptText(argument)};
  static_cast<void>(node::MakeCallback(isolate, context->Global(), local, 1, argv, {0, 0}));
}

void post(ProbeArguments args) {
  platform::MainQueue::Shared().Post(
      [function = Keep(args[0])] { CallFromLoop(function, platform::MainQueue::IsMainThread() ? "main" : "other"); });
}

void postDelayed(ProbeArguments args) {
  platform::MainQueue::Shared().PostDelayed(std::chrono::milliseconds(static_cast<int>(Number(args[0]))),
                                            [function = Keep(args[1])] { CallFromLoop(function, ""); });
}

// `count` posts from each of four threads; the function gets "thread:number" of each.
void postFromThreads(ProbeArguments args) {
  const Function function = Keep(args[1]);
  for (int thread = 0; thread < 4; ++thread) {
    std::thread([thread, function, count = static_cast<int>(Number(args[0]))] {
      for (int i = 0; i < count; ++i) {
        platform::MainQueue::Shared().Post(
            [=] { CallFromLoop(function, std::to_string(thread) + ":" + std::to_string(i)); });
      }
    }).detach();
  }
}

void background(ProbeArguments args) {
  platform::BackgroundQueue::Shared().Post(
      [function = Keep(args[1]), pause = std::chrono::milliseconds(static_cast<int>(Number(args[0])))] {
        std::this_thread::sleep_for(pause);
        const bool isMain = platform::MainQueue::IsMainThread();
        platform::MainQueue::Shared().Post([=] { CallFromLoop(function, isMain ? "main" : "other"); });
      });
}

// Waits for the end of the process with a task that posts when it is destroyed.
void postFromDestructor() {
  struct Poster {
    ~Poster() {
      platform::MainQueue::Shared().Post([] {});
    }
  };
  const auto poster = std::make_shared<Poster>();
  platform::MainQueue::Shared().PostDelayed(std::chrono::hours(1), [poster] {});
}

void raiseOnMainQueue() {
  platform::MainQueue::Shared().Post([] { [NSException raise:@"TsProbe" format:@"raised by a test"]; });
}

int kernelVariable(std::string name) {
  const auto variable = platform::ReadKernelVariable(name);
  return static_cast<int>(variable.error == 0 ? variable.value : -variable.error);
}

std::string logDirectory(std::string application) { return platform::LogDirectory(application).string(); }

id preferredLanguages() { return [[NSLocale preferredLanguages] componentsJoinedByString:@","]; }

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
  PROBE(preferredLanguages);
}
