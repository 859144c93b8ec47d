#include <mutex>
#include <string>

#include "Base/Ref.h"
#include "Platform/MainQueue.h"
#include "PlatformProbe.h"
#include "Probe.h"
#include "Reachability/TsReachability.h"
#include "Utilities/TsNotificationObserver.h"
#include "Utilities/TsScriptValues.h"

namespace platform = tessaro::platform;

namespace {

// A target whose flags the test chooses: no Linux machine has connections that must be dialled.
class ChosenTarget final : public platform::NetworkReachability {
 public:
  explicit ChosenTarget(std::optional<platform::ReachabilityFlags> flags) : flags_(flags) {}

  [[nodiscard]] std::optional<platform::ReachabilityFlags> Flags() const noexcept override { return flags_; }
  [[nodiscard]] bool Watch(std::shared_ptr<platform::SerialQueue>, Changed) noexcept override { return false; }
  void Unwatch() noexcept override {}

 private:
  std::optional<platform::ReachabilityFlags> flags_;
};

TsReachability* MonitorOf(ProbeArguments args) {
  if (args[0]->IsNumber()) {
    const auto flags = args[0].As<v8::Uint32>()->Value();
    return [[[TsReachability alloc] initWithReachabilityRef:std::make_shared<ChosenTarget>(flags)] autorelease];
  }
  NSString* target = convertToNSString(args[0]);
  if (target == nil) {
    return [[[TsReachability alloc] initWithReachabilityRef:std::make_shared<ChosenTarget>(std::nullopt)] autorelease];
  }
  if ([target isEqual:@"internet"]) return [TsReachability reachabilityForInternetConnection];
  if ([target isEqual:@"local WiFi"]) return [TsReachability reachabilityForLocalWiFi];
  return [TsReachability reachabilityWithHostName:target];
}

// Every query of the monitor of a target: chosen flags, null for flags that can't be read, or a name.
void query(ProbeArguments args) {
  @autoreleasepool {
    v8::Isolate* isolate = args.GetIsolate();
    TsReachability* monitor = MonitorOf(args);
    if (monitor == nil) return args.GetReturnValue().SetNull();
    const auto answers = v8::Object::New(isolate);
    const auto set = [&](const char* name, v8::Local<v8::Value> value) {
      const auto key = v8::String::NewFromUtf8(isolate, name).ToLocalChecked();
      answers->Set(isolate->GetCurrentContext(), key, value).Check();
    };
    const auto yesOrNo = [&](const char* name, BOOL value) { set(name, v8::Boolean::New(isolate, value)); };
    yesOrNo("isReachable", [monitor isReachable]);
    yesOrNo("isConnected", [monitor isConnected]);
    yesOrNo("isReachableViaWWAN", [monitor isReachableViaWWAN]);
    yesOrNo("isReachableViaWiFi", [monitor isReachableViaWiFi]);
    yesOrNo("isConnectionRequired", [monitor isConnectionRequired]);
    yesOrNo("connectionRequired", [monitor connectionRequired]);
    yesOrNo("isConnectionOnDemand", [monitor isConnectionOnDemand]);
    yesOrNo("isInterventionRequired", [monitor isInterventionRequired]);
    yesOrNo("reachableOnWWAN", [monitor reachableOnWWAN]);
    yesOrNo("startNotifier", [monitor startNotifier]);
    yesOrNo("startNotifierAgain", [monitor startNotifier]);
    [monitor stopNotifier];
    set("status", v8::Integer::New(isolate, static_cast<int>([monitor currentReachabilityStatus])));
    set("flags", v8::Integer::NewFromUnsigned(isolate, [monitor reachabilityFlags]));
    set("string", ToScriptString(isolate, [monitor currentReachabilityString]).ToLocalChecked());
    set("description", ToScriptString(isolate, [monitor description]).ToLocalChecked());
    args.GetReturnValue().Set(answers);
  }
}

struct Seen {
  std::string text;
  std::mutex mutex;

  void Add(const char* what) {
    const std::lock_guard lock(mutex);
    text += what;
    text += platform::MainQueue::IsMainThread() ? "! " : " ";
  }
};

Seen& WhatIsSeen() {
  static Seen seen;
  return seen;
}

// Starts a monitor that nobody but itself keeps. seen() tells which of its blocks have been called; a "!" follows what
// came on the main thread.
void watch(ProbeArguments args) {
  @autoreleasepool {
    TsReachability* monitor = MonitorOf(args);
    [monitor setReachableBlock:[](TsReachability*) { WhatIsSeen().Add("reachable"); }];
    [monitor setUnreachableBlock:[](TsReachability*) { WhatIsSeen().Add("unreachable"); }];
    [monitor setReachabilityBlock:[](TsReachability*) { WhatIsSeen().Add("changed"); }];
    TsObserveOnMainQueue(kTsReachabilityChangedNotification, [monitor](NSNotification* notification) {
      if ([notification object] == monitor) WhatIsSeen().Add("notified");
    });
    args.GetReturnValue().Set(static_cast<bool>([monitor startNotifier]));
  }
}

void seen(ProbeArguments args) {
  const std::lock_guard lock(WhatIsSeen().mutex);
  args.GetReturnValue().Set(v8::String::NewFromUtf8(args.GetIsolate(), WhatIsSeen().text.c_str()).ToLocalChecked());
}

}  // namespace

void AttachReachabilityProbe(v8::Local<v8::Object> exports) {
  NODE_SET_METHOD(exports, "query", query);
  NODE_SET_METHOD(exports, "watch", watch);
  NODE_SET_METHOD(exports, "seen", seen);
}
