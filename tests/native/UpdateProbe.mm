#import <Foundation/Foundation.h>
#import <objc/runtime.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <string>
#include <thread>

#include "Application/TsApplicationUpdate.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Crashes/TsSentryLogger.h"
#include "Platform/Common/CrashRecord.h"
#include "Platform/Common/UpdateAddress.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Common/VersionOrder.h"
#include "Platform/CrashReporter.h"
#include "Probe.h"
#include "TessaroNative/Dispatch.h"

namespace platform = tessaro::platform;

namespace {

// -1, 0 or 1.
int compareVersions(std::string left, std::string right) {
  const auto order = platform::CompareVersions(left, right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

bool isTrustworthyAddress(std::string address) { return platform::IsTrustworthyAddress(address); }

platform::UpdateSettings Settings(std::string current, std::string system, std::string channel) {
  return {std::move(current), std::move(system), std::move(channel), {"linux", {"de", "en"}}, "3.7"};
}

const char* Name(const std::optional<platform::Unsuitable>& judgement) {
  // In the order of their declaration.
  static constexpr const char* kNames[] = {"no version",    "not newer",      "skipped",
                                           "other system",  "system too old", "system too new",
                                           "other channel", "no file",        "not signed"};
  return judgement ? kNames[static_cast<std::size_t>(*judgement)] : "suitable";
}

// {judgements, versions, update, url, length}, or the reason, a text.
id decide(std::string_view feed, std::string current, std::string system, std::string channel) {
  const auto decision = platform::DecideUpdate(feed, Settings(current, system, channel));
  if (!decision) return TsNSString(decision.error().message);
  NSMutableArray* judgements = [NSMutableArray array];
  NSMutableArray* versions = [NSMutableArray array];
  for (const auto& each : decision->judgements) [judgements addObject:TsNSString(Name(each))];
  for (const auto& each : decision->items) [versions addObject:TsNSString(each.version)];
  NSMutableDictionary* answer =
      [NSMutableDictionary dictionaryWithObjectsAndKeys:judgements, @"judgements", versions, @"versions", nil];
  if (decision->update) {
    [answer setObject:TsNSString(decision->items[*decision->update].version) forKey:@"update"];
    [answer setObject:TsNSString(decision->file.url) forKey:@"url"];
    if (decision->file.length) [answer setObject:@(*decision->file.length) forKey:@"length"];
  }
  return answer;
}

// The number of the update's item, or -1.
int decideOnly(std::string_view feed, std::string current, std::string system, std::string channel) {
  const auto decision = platform::DecideUpdate(feed, Settings(current, system, channel));
  return decision && decision->update ? static_cast<int>(*decision->update) : -1;
}

// fuzz(buffer, count, seed): decides on mutations of the feed; how many of them had an update, or a negative number
// when one was offered that must not be.
int fuzz(std::string_view feedBefore, int count, std::uint32_t seed) {
  const std::string original(feedBefore);
  std::uint64_t state = seed | 1;
  const auto random = [&state](std::size_t below) {
    state ^= state << 13;
    state ^= state >> 7;
    state ^= state << 17;
    return static_cast<std::size_t>(state % below);
  };
  constexpr std::string_view kPieces[] = {"<item>", "</item>", "\"",        "]]>",  "<![CDATA[",  "&",
                                          "<",      ">",       "sparkle:",  "0",    "<!--",       "-->",
                                          "\0",     "&#0;",    "<!DOCTYPE", "\xff", "9999999999", "<?"};
  int updates = 0;
  for (int i = 0; i < count; ++i) {
    std::string feed = original;
    for (std::size_t change = random(6) + 1; change > 0 && !feed.empty(); --change) {
      const std::size_t at = random(feed.size());
      switch (random(4)) {
        case 0:
          feed[at] = static_cast<char>(random(256));
          break;
        case 1:
          feed.erase(at, random(64));
          break;
        case 2:
          feed.insert(at, kPieces[random(std::size(kPieces))]);
          break;
        default:
          feed.insert(at, original.substr(random(original.size()), random(256)));
      }
    }
    const auto decision = platform::DecideUpdate(feed, {"2.0", "12", "stable", {"linux", {"de"}}, ""});
    if (!decision && decision.error().message.empty()) return -1;
    if (!decision || !decision->update) continue;
    const auto& version = decision->items.at(*decision->update).version;
    if (platform::CompareVersions(version, "2.0") <= 0) return -2;
    if (!platform::IsTrustworthyAddress(decision->file.url)) return -3;
    ++updates;
  }
  return updates;
}

// The Linux updater never asks this question of its delegate.
bool promptsForPermission() {
  TsApplicationUpdate* update = [TsApplicationUpdate sharedInstance];
  return [update updaterShouldPromptForPermissionToCheckForUpdates:platform::Updater::Shared()] != NO;
}

bool isDryRun() { return [[TsApplicationUpdate sharedInstance] dryRun] != NO; }

void resetLastProfileSubmissionDate() { [[TsApplicationUpdate sharedInstance] resetLastProfileSubmissionDate]; }

// Nobody has no language at all, but an environment may bring it about.
void forgetLanguages() {
  const Method languages = class_getClassMethod([NSLocale class], @selector(preferredLanguages));
  method_setImplementation(languages, reinterpret_cast<IMP>(+[](id, SEL) -> id { return [NSArray array]; }));
}

// In seconds since 1970.
void setDateDefault(NSString* key, double seconds) {
  [[NSUserDefaults standardUserDefaults] setObject:[NSDate dateWithTimeIntervalSince1970:seconds] forKey:key];
}

id dateDefault(NSString* key) {
  NSDate* date = As<NSDate>([[NSUserDefaults standardUserDefaults] objectForKey:key]);
  return date != nil ? @([date timeIntervalSince1970]) : nil;
}

// ---- Crashes

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

// Whoever handled crashes before: tells of its turn by the process's code.
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

}  // namespace

void AttachUpdateProbe(v8::Local<v8::Object> exports) {
  PROBE(compareVersions);
  PROBE(isTrustworthyAddress);
  PROBE(decide);
  PROBE(decideOnly);
  PROBE(fuzz);
  PROBE(promptsForPermission);
  PROBE(isDryRun);
  PROBE(resetLastProfileSubmissionDate);
  PROBE(forgetLanguages);
  PROBE(setDateDefault);
  PROBE(dateDefault);
  PROBE(readCrashRecord);
  PROBE(whyNoProject);
  PROBE(crash);
  PROBE(crashEverywhere);
  PROBE(handleCrashes);
  PROBE(crashInFork);
  PROBE(logFromThread);
}
