#import <AppKit/AppKit.h>
#include <node_api.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "native/AtomApplication.h"
#include "native/DockMenu.h"
#include "native/FileDrag.h"
#include "native/Host.h"
#include "native/MainMenu.h"
#include "native/RunLoopProbe.h"
#include "native/ScriptValues.h"

namespace {

constexpr std::size_t kMostArguments = 4;

// A script function's arguments as Cocoa values. Missing ones are nil.
class Arguments {
 public:
  explicit Arguments(NSArray* values) : values_(values) {}

  [[nodiscard]] id operator[](NSUInteger index) const {
    id value = index < [values_ count] ? [values_ objectAtIndex:index] : nil;
    return [value isKindOfClass:[NSNull class]] ? nil : value;
  }

 private:
  NSArray* values_;
};

using Function = id (*)(Host&, const Arguments&);

NSNumber* Truth(bool value) { return [NSNumber numberWithBool:value]; }

id Start(Host& host, const Arguments& arguments) {
  const Host::Display display = host.Start(
      {.name = [arguments[0] objectForKey:@"argv0"], .bundlePath = [arguments[0] objectForKey:@"bundlePath"]});
  if (display.isAvailable) return @{@"display" : Truth(true)};
  return @{@"display" : Truth(false), @"reason" : display.reason};
}

id Stop(Host& host, const Arguments&) {
  host.Stop();
  return nil;
}

id SetKeepAlive(Host& host, const Arguments& arguments) {
  host.pump().SetKeepsAlive([arguments[0] boolValue]);
  return nil;
}

id Stats(Host& host, const Arguments&) {
  const RunLoopPump::Statistics& statistics = host.pump().statistics();
  return @{
    @"turns" : @(statistics.turns),
    @"events" : @(statistics.events),
    @"descriptorWakes" : @(statistics.descriptorWakes),
    @"timerWakes" : @(statistics.timerWakes),
    @"nanoseconds" : @(statistics.nanoseconds),
  };
}

id CreateWindow(Host& host, const Arguments& arguments) {
  NSDictionary* options = arguments[0];
  return host.windows().Open(
      [options objectForKey:@"title"],
      NSMakeSize([[options objectForKey:@"width"] doubleValue], [[options objectForKey:@"height"] doubleValue]));
}

id CloseWindow(Host& host, const Arguments& arguments) {
  host.windows().Close(arguments[0]);
  return nil;
}

id SetWindowTitle(Host& host, const Arguments& arguments) {
  host.windows().SetTitle(arguments[0], arguments[1]);
  return nil;
}

id WindowInfo(Host& host, const Arguments& arguments) { return host.windows().Describe(arguments[0]); }

id KeyArrivals(Host&, const Arguments&) { return [static_cast<AtomApplication*>(NSApp) keyArrivals]; }

id MainMenuDescription(Host&, const Arguments&) { return DescribeMenu([NSApp mainMenu]); }

id DockMenu(Host&, const Arguments&) { return DescribeDockMenu(); }

id SetDefault(Host&, const Arguments& arguments) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  if (id value = arguments[1]) {
    [defaults setObject:value forKey:arguments[0]];
  } else {
    [defaults removeObjectForKey:arguments[0]];
  }
  return nil;
}

id PostNotification(Host&, const Arguments& arguments) {
  [[NSNotificationCenter defaultCenter] postNotificationName:arguments[0] object:arguments[1] userInfo:arguments[2]];
  return nil;
}

id HasMethod(Host&, const Arguments& arguments) {
  return Truth([NSClassFromString(arguments[0]) instancesRespondToSelector:NSSelectorFromString(arguments[1])]);
}

id Localized(Host&, const Arguments& arguments) {
  return [[NSBundle mainBundle] localizedStringForKey:arguments[0] value:nil table:nil];
}

id BundleInfo(Host&, const Arguments&) {
  NSBundle* bundle = [NSBundle mainBundle];
  return @{
    @"path" : [bundle bundlePath],
    @"identifier" : [bundle bundleIdentifier],
    @"info" : [bundle infoDictionary],
    @"processName" : [[NSProcessInfo processInfo] processName],
  };
}

NSString* NameOf(DragOutcome outcome) {
  switch (outcome) {
    case DragOutcome::kAccepted:
      return @"accepted";
    case DragOutcome::kRefused:
      return @"refused";
    case DragOutcome::kNoTarget:
      return @"no target";
    case DragOutcome::kNoAnswer:
      return @"no answer";
    case DragOutcome::kNoDisplay:
      return @"no display";
  }
}

id Drag(Host&, const Arguments& arguments) {
  std::vector<std::string> paths;
  for (NSString* path in static_cast<NSArray*>(arguments[2])) paths.emplace_back([path UTF8String]);
  return NameOf(DragFiles([arguments[0] intValue], [arguments[1] intValue], paths));
}

// probe(name, argument): see RunLoopProbe.h.
id Probe(Host& host, const Arguments& arguments) {
  SEL selector = NSSelectorFromString([arguments[0] stringByAppendingString:@":"]);
  [host.probe() performSelector:selector withObject:arguments[1]];
  return nil;
}

struct Entry {
  const char* name;
  Function function;
};

constexpr Entry kFunctions[] = {
    {"start", Start},
    {"stop", Stop},
    {"setKeepAlive", SetKeepAlive},
    {"stats", Stats},
    {"createWindow", CreateWindow},
    {"closeWindow", CloseWindow},
    {"setWindowTitle", SetWindowTitle},
    {"windowInfo", WindowInfo},
    {"keyArrivals", KeyArrivals},
    {"mainMenuDescription", MainMenuDescription},
    {"dockMenu", DockMenu},
    {"setDefault", SetDefault},
    {"postNotification", PostNotification},
    {"hasMethod", HasMethod},
    {"localized", Localized},
    {"bundleInfo", BundleInfo},
    {"dragFiles", Drag},
    {"probe", Probe},
};

Host& HostOf(napi_env env) {
  void* host = nullptr;
  napi_get_instance_data(env, &host);
  return *static_cast<Host*>(host);
}

// The entry of all calls from script: provides an autorelease pool and turns exceptions into errors.
napi_value Call(napi_env env, napi_callback_info info) {
  std::array<napi_value, kMostArguments> values;
  std::size_t count = values.size();
  void* entry = nullptr;
  napi_get_cb_info(env, info, &count, values.data(), nullptr, &entry);

  @autoreleasepool {
    @try {
      NSMutableArray* arguments = [NSMutableArray array];
      for (std::size_t i = 0; i < std::min(count, values.size()); ++i) {
        id argument = FromScript(env, values[i]);
        [arguments addObject:argument != nil ? argument : [NSNull null]];
      }
      return ToScript(env, static_cast<const Entry*>(entry)->function(HostOf(env), Arguments(arguments)));
    } @catch (NSException* exception) {
      napi_throw_error(env, [[exception name] UTF8String], [[exception reason] UTF8String]);
    }
  }
  return nullptr;
}

napi_value SetEventHandler(napi_env env, napi_callback_info info) {
  napi_value handler = nullptr;
  std::size_t count = 1;
  napi_get_cb_info(env, info, &count, &handler, nullptr, nullptr);
  napi_valuetype type = napi_undefined;
  napi_typeof(env, handler, &type);
  if (type != napi_function) {
    napi_throw_type_error(env, nullptr, "The event handler must be a function");
    return nullptr;
  }
  HostOf(env).events().SetHandler(handler);
  return nullptr;
}

void Define(napi_env env, napi_value exports, const char* name, napi_callback callback, const Entry* entry) {
  napi_value function = nullptr;
  napi_create_function(env, name, NAPI_AUTO_LENGTH, callback, const_cast<Entry*>(entry), &function);
  napi_set_named_property(env, exports, name, function);
}

bool IsMainThread() { return getpid() == static_cast<pid_t>(syscall(SYS_gettid)); }

void EndWithEnvironment(napi_env, void* host, void*) {
  @autoreleasepool {
    delete static_cast<Host*>(host);
  }
}

}  // namespace

NAPI_MODULE_INIT() {
  if (!IsMainThread()) {
    napi_throw_error(env, nullptr, "TessaroHost works on the main thread only, not in a worker");
    return nullptr;
  }
  @autoreleasepool {
    uv_loop_t* loop = nullptr;
    napi_get_uv_event_loop(env, &loop);
    napi_set_instance_data(env, std::make_unique<Host>(env, loop).release(), EndWithEnvironment, nullptr);
    for (const Entry& entry : kFunctions) Define(env, exports, entry.name, Call, &entry);
    Define(env, exports, "setEventHandler", SetEventHandler, nullptr);
  }
  return exports;
}
