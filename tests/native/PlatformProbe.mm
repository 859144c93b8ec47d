#import <AppKit/AppKit.h>

#include <memory>
#include <thread>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/Services.h"
#include "Platform/StandardDirectories.h"
#include "Platform/TaskQueues.h"
#include "Probe.h"

namespace platform = tessaro::platform;

namespace {

using std::chrono::milliseconds;

const char* ThreadName() { return platform::MainQueue::IsMainThread() ? "main" : "other"; }

void post(ScriptCallback callback) {
  platform::MainQueue::Shared().Post([callback] { callback(ThreadName()); });
}

void postDelayed(int delay, ScriptCallback callback) {
  platform::MainQueue::Shared().PostDelayed(milliseconds(delay), [callback] { callback(""); });
}

// `count` posts from each of four threads; the callback gets "thread:number" of each. No thread may be the last one
// that holds the callback.
void postFromThreads(int count, ScriptCallback callback) {
  for (int thread = 0; thread < 4; ++thread) {
    std::thread([=]() mutable {
      for (int i = 0; i < count; ++i) {
        platform::MainQueue::Shared().Post([=] { callback(std::to_string(thread) + ":" + std::to_string(i)); });
      }
      platform::MainQueue::Shared().Post([callback = std::move(callback)] {});
    }).detach();
  }
}

void background(int pause, ScriptCallback callback) {
  platform::BackgroundQueue::Shared().Post([=]() mutable {
    std::this_thread::sleep_for(milliseconds(pause));
    platform::MainQueue::Shared().Post([callback = std::move(callback), thread = ThreadName()] { callback(thread); });
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

// The event of a connection that is not there any more.
void receiveNoConnection() {
  id port = Adopt([[NSMessagePort alloc] init]).Autoreleased();
  NSInteger descriptors[16];
  NSInteger count = 16;
  [port getFds:descriptors count:&count];
  if (count == 0) [NSException raise:@"TsProbe" format:@"the port does not listen"];
  [port receivedEvent:nullptr type:ET_RPORT extra:reinterpret_cast<void*>(descriptors[0]) forMode:NSDefaultRunLoopMode];
}

std::string logDirectory(std::string application) { return platform::LogDirectory(application).string(); }

// Uses another application's service, as its Services menu would. Gives the reason of a failure.
std::string performWithFiles(std::string service, NSArray* paths) {
  NSPasteboard* pasteboard = [NSPasteboard pasteboardWithUniqueName];
  [pasteboard declareTypes:@[ NSFilenamesPboardType ] owner:nil];
  [pasteboard setPropertyList:paths forType:NSFilenamesPboardType];
  const auto performed = platform::PerformService(service, TsStdString([pasteboard name]));
  return performed ? "" : performed.error().message;
}

PROBES("platform", post, postDelayed, postFromThreads, background, postFromDestructor, raiseOnMainQueue,
       receiveNoConnection, logDirectory, performWithFiles);

}  // namespace
