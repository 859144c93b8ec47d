#import <Foundation/Foundation.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Crashes/TsSentryLogger.h"
#include "Platform/Common/CrashRecord.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/CrashReporter.h"
#include "Probe.h"
#include "TessaroNative/FunctionTable.h"

namespace platform = tessaro::platform;

namespace {

// -1, 0 or 1.
int compareVersions(std::string left, std::string right) {
  const auto order = platform::CompareVersions(left, right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool isTrustworthyAddress(std::string address) { return platform::IsTrustworthyAddress(address); }

// {judgements, versions, update, url, length}, or the reason, a text. The judgement on a suitable item is -1.
id decide(std::string_view feed, std::string current, std::string system, std::string channel) {
  const auto decision = platform::DecideUpdate(feed, {current, system, channel, {"linux", {"de", "en"}}, "3.7"});
  if (!decision) return TsNSString(decision.error().message);
  const auto judged = [](const auto& judgement) { return @(judgement ? static_cast<int>(*judgement) : -1); };
  NSMutableDictionary* answer = [NSMutableDictionary dictionary];
  [answer setObject:List(decision->judgements, judged) forKey:@"judgements"];
  [answer setObject:List(decision->items, [](const auto& item) { return TsNSString(item.version); })
             forKey:@"versions"];
  if (decision->update) {
    [answer setObject:TsNSString(decision->items[*decision->update].version) forKey:@"update"];
    [answer setObject:TsNSString(decision->file.url) forKey:@"url"];
    if (decision->file.length) [answer setObject:@(*decision->file.length) forKey:@"length"];
  }
  return answer;
}

id readCrashRecord(std::string_view record) {
  auto event = platform::ReadCrashRecord(record);
  return event ? TsSerialisedEvent(*event) : nil;
}

// The reason why an address is no project's; empty when it is.
std::string whyNoProject(std::string address) {
  const auto client = platform::CrashReporter::ForProject(address, {});
  return client ? "" : client.error().message;
}

// Uses up the stack of a thread.
__attribute__((noinline, no_sanitize("address"))) int Overflow(int depth) {
  volatile char room[4096];
  room[depth % 4096] = 1;
  return depth < 0 ? 0 : Overflow(depth + 1) + room[depth % 4096];
}

// crash(how), with and without a thread of its own.
void crash(std::string how) {
  const auto isIn = [&how](const char* word) { return how.find(word) != std::string::npos; };
  const auto work = [&] {
    if (isIn("overflow")) [[maybe_unused]]
      volatile int depth = Overflow(0);
    if (isIn("abort")) std::abort();
    if (isIn("trap")) __builtin_trap();
    if (isIn("break")) raise(SIGTRAP);
    if (isIn("fault")) platform::CrashReporter::Crash();
  };
  if (!isIn("thread")) return work();
  std::thread([&] {
    pthread_setname_np(pthread_self(), "unlucky");
    work();
  }).join();
}

// Several threads crash at once.
void crashEverywhere() {
  std::atomic<int> ready = 0;
  for (int i = 0; i < 8; ++i) {
    std::thread([&] {
      for (++ready; ready < 8;) continue;
      platform::CrashReporter::Crash();
    }).detach();
  }
  for (;;) pause();
}

// Handlers from before the module's: the process's code shows that they were called.
void handleCrashes() {
  struct sigaction action {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = [](int, siginfo_t* information, void* context) {
    _exit(information != nullptr && context != nullptr ? 42 : 43);
  };
  for (const int signal : {SIGSEGV, SIGABRT, SIGTRAP}) sigaction(signal, &action, nullptr);
}

// Has a forked process crash; gives the signal that ended it.
int crashInFork() {
  const pid_t child = fork();
  if (child == 0) platform::CrashReporter::Crash();
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : 0;
}

// logFromThread(name, text): the thread that logs has that name.
void logFromThread(std::string name, std::string text) {
  std::thread([name, text] {
    pthread_setname_np(pthread_self(), name.c_str());
    TsLogTextWarning(text);
  }).join();
}

PROBES("updates", compareVersions, isTrustworthyAddress, decide, readCrashRecord, whyNoProject, crash, crashEverywhere,
       handleCrashes, crashInFork, logFromThread);

}  // namespace
