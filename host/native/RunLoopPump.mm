#include "native/RunLoopPump.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

namespace {

// Under a flood of events script must still get its turns.
constexpr int kMostEventsInTurn = 64;

constexpr std::uint64_t kBusyTurnInterval = 1'000'000;  // nanoseconds

constexpr NSTimeInterval kLongestWait = 24 * 60 * 60;

class Occupied {
 public:
  explicit Occupied(bool& flag) : flag_(flag) { flag_ = true; }
  ~Occupied() { flag_ = false; }
  Occupied(const Occupied&) = delete;
  Occupied& operator=(const Occupied&) = delete;

 private:
  bool& flag_;
};

void LogException(NSException* exception) {
  NSLog(@"The event loop goes on after %@: %@", [exception name], [exception reason]);
}

NSEvent* NextEvent() {
  @try {
    return [NSApp nextEventMatchingMask:NSAnyEventMask
                              untilDate:[NSDate distantPast]
                                 inMode:NSDefaultRunLoopMode
                                dequeue:YES];
  } @catch (NSException* exception) {
    LogException(exception);
    return nil;
  }
}

// As -[NSApplication run] handles an event.
void SendEvent(NSEvent* event) {
  const NSEventType type = [event type];
  @try {
    [NSApp sendEvent:event];
    if (type != NSPeriodic && type != NSMouseMoved && type != NSAppKitDefined) [[NSApp mainMenu] update];
    if (type != NSMouseMoved) [NSApp updateWindows];
  } @catch (NSException* exception) {
    LogException(exception);
  }
}

void AcceptInput() {
  @try {
    [[NSRunLoop currentRunLoop] acceptInputForMode:NSDefaultRunLoopMode beforeDate:[NSDate distantPast]];
  } @catch (NSException* exception) {
    LogException(exception);
  }
}

// Fires the timers that are due, and gives the time of the next one.
NSDate* FireTimers() {
  @try {
    return [[NSRunLoop currentRunLoop] limitDateForMode:NSDefaultRunLoopMode];
  } @catch (NSException* exception) {
    LogException(exception);
    return [NSDate distantPast];
  }
}

}  // namespace

RunLoopPump::RunLoopPump(uv_loop_t* loop, const ScriptContext& script, RunLoopDescriptors& descriptors)
    : loop_(loop), script_(script), descriptors_(descriptors) {}

void RunLoopPump::Start(DisplayConnection* display, std::function<void()> displayLost) {
  if (IsRunning()) return;
  display_ = display;
  displayLost_ = std::move(displayLost);

  // One epoll descriptor for all: libuv makes polled descriptors non-blocking, which Cocoa's must not be.
  poll_ = MakeUvHandleOn<uv_poll_t>(loop_, this, uv_poll_init, epoll_.descriptor());
  if (!poll_) return NSLog(@"The event loop can't run: no descriptor is left to wait with");
  timer_ = MakeUvHandleOn<uv_timer_t>(loop_, this, uv_timer_init);
  prepare_ = MakeUvHandleOn<uv_prepare_t>(loop_, this, uv_prepare_init);
  check_ = MakeUvHandleOn<uv_check_t>(loop_, this, uv_check_init);

  uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) {
    ++OwnerOf<RunLoopPump>(handle).statistics_.descriptorWakes;
    OwnerOf<RunLoopPump>(handle).Wake();
  });
  uv_prepare_start(prepare_.get(), [](uv_prepare_t* handle) { OwnerOf<RunLoopPump>(handle).BeforeSleep(); });
  // Right after libuv has slept: the shortest way from the descriptor to the event.
  uv_check_start(check_.get(), [](uv_check_t* handle) {
    RunLoopPump& pump = OwnerOf<RunLoopPump>(handle);
    if (pump.isWoken_) pump.Turn();
  });
  SetKeepsAlive(keepsAlive_);
}

void RunLoopPump::Stop() {
  poll_.reset();
  timer_.reset();
  prepare_.reset();
  check_.reset();
}

void RunLoopPump::SetKeepsAlive(bool keeps) {
  keepsAlive_ = keeps;
  if (!IsRunning()) return;
  (keeps ? uv_ref : uv_unref)(reinterpret_cast<uv_handle_t*>(poll_.get()));
}

// Script may have caused events, and Xlib may have read some ahead of the descriptor.
void RunLoopPump::BeforeSleep() {
  // A loop that script keeps busy gets here many thousand times a second.
  const bool isBusy = uv_backend_timeout(loop_) == 0;
  if (!isBusy || uv_hrtime() - lastTurn_ >= kBusyTurnInterval) Turn();
}

void RunLoopPump::Turn() {
  if (isInTurn_) return;
  const Occupied occupied(isInTurn_);
  lastTurn_ = uv_hrtime();
  @autoreleasepool {
    // Before and after: the server may go away while the loop sleeps, or while an event is handled.
    NoticeLostDisplay();
    isWoken_ = false;
    const bool more = DispatchEvents();
    NoticeLostDisplay();
    if (!IsRunning()) return;
    ScheduleWake(more);
    WatchDescriptors();
  }
  ++statistics_.turns;
  statistics_.nanoseconds += uv_hrtime() - lastTurn_;
}

bool RunLoopPump::DispatchEvents() {
  if (display_ == nullptr) {
    const ScriptTurn turn(script_);
    AcceptInput();
    return false;
  }
  for (int count = 0; count < kMostEventsInTurn; ++count) {
    if (!IsRunning() || !DispatchNextEvent()) return false;
  }
  return true;
}

bool RunLoopPump::DispatchNextEvent() {
  const ScriptTurn turn(script_);
  NSEvent* event = NextEvent();
  if (event == nil) return false;
  ++statistics_.events;
  SendEvent(event);
  return true;
}

void RunLoopPump::ScheduleWake(bool atOnce) {
  const ScriptTurn turn(script_);
  NSDate* due = FireTimers();
  if (IsRunning()) StartTimer(atOnce ? [NSDate distantPast] : due);
}

void RunLoopPump::StartTimer(NSDate* due) {
  const NSTimeInterval wait = due == nil ? kLongestWait : [due timeIntervalSinceNow];
  if (wait >= kLongestWait) {
    uv_timer_stop(timer_.get());
    return;
  }
  // The loop's clock stands still while its callbacks run.
  uv_update_time(loop_);
  const auto fire = [](uv_timer_t* handle) {
    ++OwnerOf<RunLoopPump>(handle).statistics_.timerWakes;
    OwnerOf<RunLoopPump>(handle).Wake();
  };
  uv_timer_start(timer_.get(), fire, static_cast<std::uint64_t>(std::ceil(std::max(wait, 0.0) * 1000)), 0);
}

void RunLoopPump::WatchDescriptors() {
  if (descriptors_.TakeChange()) epoll_.Watch(descriptors_.Collect());
}

void RunLoopPump::NoticeLostDisplay() {
  if (display_ == nullptr) return;
  const int descriptor = display_->Descriptor();
  if (!display_->IsLost() && !(isWoken_ && epoll_.IsHungUp(descriptor))) return;

  display_->MarkLost();
  display_ = nullptr;
  // The dead descriptor stays readable and would keep the loop awake.
  for (NSString* mode in @[ NSDefaultRunLoopMode, NSEventTrackingRunLoopMode, NSModalPanelRunLoopMode ]) {
    [[NSRunLoop currentRunLoop] removeEvent:reinterpret_cast<void*>(static_cast<std::intptr_t>(descriptor))
                                       type:ET_RDESC
                                    forMode:mode
                                        all:YES];
  }
  const ScriptTurn turn(script_);
  displayLost_();
}
