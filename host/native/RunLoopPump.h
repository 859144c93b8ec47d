#pragma once

#include <uv.h>

#include <cstdint>
#include <functional>

#include "Base/UvHandle.h"
#include "native/DisplayConnection.h"
#include "native/EpollSet.h"
#include "native/RunLoopDescriptors.h"
#include "native/ScriptContext.h"

@class NSDate;

// Runs Cocoa's event loop inside of Node's: one thread, asleep in libuv until either of them has something to do.
//
// A nested Cocoa loop (a modal panel, an open menu) stops script until it ends, because libuv can't be nested.
// Main thread only.
class RunLoopPump {
 public:
  struct Statistics {
    std::uint64_t turns = 0;
    std::uint64_t events = 0;
    std::uint64_t descriptorWakes = 0;
    std::uint64_t timerWakes = 0;
    std::uint64_t nanoseconds = 0;  // spent in turns
  };

  // Everything given must outlive the pump.
  RunLoopPump(uv_loop_t* loop, const ScriptContext& script, RunLoopDescriptors& descriptors);
  ~RunLoopPump() { Stop(); }
  RunLoopPump(const RunLoopPump&) = delete;
  RunLoopPump& operator=(const RunLoopPump&) = delete;

  // With `display`, the application's events are dispatched too; otherwise only Foundation's timers, ports and calls
  // from other threads. When the display's server goes away, the application's events end, `displayLost` is called,
  // and Foundation's part goes on.
  void Start(DisplayConnection* display, std::function<void()> displayLost);
  void Stop();
  [[nodiscard]] bool IsRunning() const { return prepare_ != nullptr; }

  // Whether the pump keeps the process from ending by itself. By default it doesn't.
  void SetKeepsAlive(bool keeps);

  [[nodiscard]] const Statistics& statistics() const { return statistics_; }

 private:
  void Wake() { isWoken_ = true; }
  void BeforeSleep();
  void Turn();
  // Both return whether there may be more to do at once.
  bool DispatchEvents();
  bool DispatchNextEvent();
  void ScheduleWake(bool atOnce);
  void StartTimer(NSDate* due);
  void WatchDescriptors();
  void NoticeLostDisplay();

  uv_loop_t* const loop_;
  const ScriptContext& script_;
  RunLoopDescriptors& descriptors_;
  DisplayConnection* display_ = nullptr;
  std::function<void()> displayLost_;

  EpollSet epoll_;
  UvHandle<uv_poll_t> poll_;
  UvHandle<uv_timer_t> timer_;
  UvHandle<uv_prepare_t> prepare_;
  UvHandle<uv_check_t> check_;

  Statistics statistics_;
  std::uint64_t lastTurn_ = 0;
  bool keepsAlive_ = false;
  bool isWoken_ = false;
  bool isInTurn_ = false;
};
