#pragma once

namespace tessaro::platform {

// Turns the main thread's run loop where the host doesn't: plain Node.js only knows libuv's loop, and then neither
// the main queue nor Cocoa's events, timers and transfers would ever have their turn. It does not keep the process
// alive. A host that runs its run loop, as Electron does, is recognised at the first tick and left alone.
// Main thread only.
struct RunLoopPump {
  static void Start();
  static void Stop();
};

}  // namespace tessaro::platform
