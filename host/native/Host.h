#pragma once

#import <Foundation/Foundation.h>
#include <node_api.h>

#include <memory>

#include "Base/Ref.h"
#include "native/DisplayConnection.h"
#include "native/RunLoopPump.h"
#include "native/ScriptContext.h"
#include "native/ScriptEvents.h"
#include "native/WindowList.h"

@class HostApplicationDelegate;
@class NotificationRelay;
@class RunLoopProbe;

// The application: owns everything the host is made of, for the life of the script environment. Main thread only.
class Host {
 public:
  Host(napi_env env, uv_loop_t* loop);
  ~Host();
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  struct StartOptions {
    NSString* name;        // of the process, and of its defaults
    NSString* bundlePath;  // of the main bundle
  };

  // Makes this process an application and starts its event loop. Without a display it is a Foundation process only:
  // `reason` says why, and functions that need a display raise. Starting again gives the first answer.
  struct Display {
    bool isAvailable;
    NSString* reason;
  };
  Display Start(const StartOptions& options);
  // Leaves the event loop. No event reaches script any more.
  void Stop();

  [[nodiscard]] ScriptEvents& events() { return events_; }
  [[nodiscard]] RunLoopPump& pump() { return pump_; }
  // Raises when there is no display.
  [[nodiscard]] WindowList& windows();
  [[nodiscard]] RunLoopProbe* probe() { return probe_; }

 private:
  void InitializeProcess(const StartOptions& options);
  bool ConnectToDisplay();
  void Launch();
  void LoseDisplay();

  ScriptContext script_;
  ScriptEvents events_;
  RunLoopPump pump_;
  Ref<NotificationRelay> relay_;
  Ref<HostApplicationDelegate> delegate_;
  Ref<RunLoopProbe> probe_;
  std::unique_ptr<DisplayConnection> display_;
  std::unique_ptr<WindowList> windows_;
  Ref<NSString> missingDisplayReason_;
  bool isStarted_ = false;
};
