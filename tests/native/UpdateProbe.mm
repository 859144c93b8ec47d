#include "UpdateProbe.h"

#import <Foundation/Foundation.h>
#include <node_buffer.h>
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
#include "Utilities/TsJSON.h"
#include "Utilities/TsScriptValues.h"

namespace platform = tessaro::platform;

namespace {

std::string StdText(v8::Local<v8::Value> value) { return TsStdString(convertToNSString(value)); }

std::string_view Bytes(v8::Local<v8::Value> buffer) {
  return {node::Buffer::Data(buffer), node::Buffer::Length(buffer)};
}

void ReturnText(ProbeArguments args, std::string_view text) {
  args.GetReturnValue().Set(ToScriptString(args.GetIsolate(), TsNSString(text)).ToLocalChecked());
}

// compareVersions(left, right): -1, 0 or 1.
void compareVersions(ProbeArguments args) {
  const auto order = platform::CompareVersions(StdText(args[0]), StdText(args[1]));
  args.GetReturnValue().Set(order < 0 ? -1 : order > 0 ? 1 : 0);
}

void isTrustworthyAddress(ProbeArguments args) {
  args.GetReturnValue().Set(platform::IsTrustworthyAddress(StdText(args[0])));
}

platform::UpdateSettings Settings(ProbeArguments args) {
  return {StdText(args[1]), StdText(args[2]), StdText(args[3]), {"linux", {"de", "en"}}, "3.7"};
}

const char* Name(const std::optional<platform::Unsuitable>& judgement) {
  if (!judgement) return "suitable";
  switch (*judgement) {
    case platform::Unsuitable::NoVersion:
      return "no version";
    case platform::Unsuitable::NotNewer:
      return "not newer";
    case platform::Unsuitable::Skipped:
      return "skipped";
    case platform::Unsuitable::OtherSystem:
      return "other system";
    case platform::Unsuitable::SystemTooOld:
      return "system too old";
    case platform::Unsuitable::SystemTooNew:
      return "system too new";
    case platform::Unsuitable::OtherChannel:
      return "other channel";
    case platform::Unsuitable::NoFile:
      return "no file";
    case platform::Unsuitable::NotSigned:
      return "not signed";
  }
  return "?";
}

// decide(buffer, currentVersion, systemVersion, channel): JSON of {judgements, versions, update, url, length}, or the
// reason, a text that is no JSON.
void decide(ProbeArguments args) {
  const auto decision = platform::DecideUpdate(Bytes(args[0]), Settings(args));
  if (!decision) return ReturnText(args, decision.error().message);
  NSMutableArray* judgements = [NSMutableArray array];
  NSMutableArray* versions = [NSMutableArray array];
  for (const auto& each : decision->judgements) [judgements addObject:TsNSString(Name(each))];
  for (const auto& each : decision->items) [versions addObject:TsNSString(each.version)];
  NSMutableDictionary* answer =
      [NSMutableDictionary dictionaryWithObjectsAndKeys:judgements, @"judgements", versions, @"versions", nil];
  if (decision->update) {
    [answer setObject:TsNSString(decision->items[*decision->update].version) forKey:@"update"];
    [answer setObject:TsNSString(decision->file.url) forKey:@"url"];
    if (decision->file.length) {
      [answer setObject:[NSNumber numberWithUnsignedLongLong:*decision->file.length] forKey:@"length"];
    }
  }
  ReturnJSON(args, answer);
}

// decideOnly(buffer, currentVersion, systemVersion, channel): the number of the update's item, null when there is none.
void decideOnly(ProbeArguments args) {
  const auto decision = platform::DecideUpdate(Bytes(args[0]), Settings(args));
  if (!decision || !decision->update) return args.GetReturnValue().SetNull();
  args.GetReturnValue().Set(static_cast<std::uint32_t>(*decision->update));
}

// fuzz(buffer, count, seed): decides on mutations of the feed; how many of them had an update, or a negative number
// when one was offered that must not be.
void fuzz(ProbeArguments args) {
  const std::string original(Bytes(args[0]));
  const auto context = args.GetIsolate()->GetCurrentContext();
  const int count = args[1]->Int32Value(context).FromJust();
  std::uint64_t state = args[2]->Uint32Value(context).FromJust() | 1;
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
    if (!decision && decision.error().message.empty()) return args.GetReturnValue().Set(-1);
    if (!decision || !decision->update) continue;
    const auto& version = decision->items.at(*decision->update).version;
    if (platform::CompareVersions(version, "2.0") <= 0) return args.GetReturnValue().Set(-2);
    if (!platform::IsTrustworthyAddress(decision->file.url)) return args.GetReturnValue().Set(-3);
    ++updates;
  }
  args.GetReturnValue().Set(updates);
}

// The answers that nobody on this system asks for.
void promptsForPermission(ProbeArguments args) {
  TsApplicationUpdate* update = [TsApplicationUpdate sharedInstance];
  const BOOL prompts = [update updaterShouldPromptForPermissionToCheckForUpdates:platform::Updater::Shared()];
  args.GetReturnValue().Set(prompts != NO);
}

void isDryRun(ProbeArguments args) { args.GetReturnValue().Set([[TsApplicationUpdate sharedInstance] dryRun] != NO); }

void resetLastProfileSubmissionDate(ProbeArguments) {
  [[TsApplicationUpdate sharedInstance] resetLastProfileSubmissionDate];
}

// Nobody has no language at all, but an environment may bring it about.
void forgetLanguages(ProbeArguments) {
  const Method languages = class_getClassMethod([NSLocale class], @selector(preferredLanguages));
  method_setImplementation(languages, reinterpret_cast<IMP>(+[](id, SEL) -> id { return [NSArray array]; }));
}

// setDateDefault(key, seconds since 1970, or null), dateDefault(key)
void setDateDefault(ProbeArguments args) {
  NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
  NSString* key = convertToNSString(args[0]);
  if (args[1]->IsNull()) return [defaults removeObjectForKey:key];
  [defaults setObject:[NSDate dateWithTimeIntervalSince1970:args[1].As<v8::Number>()->Value()] forKey:key];
}

void dateDefault(ProbeArguments args) {
  const id date = [[NSUserDefaults standardUserDefaults] objectForKey:convertToNSString(args[0])];
  if (![date isKindOfClass:[NSDate class]]) return args.GetReturnValue().SetNull();
  args.GetReturnValue().Set([date timeIntervalSince1970]);
}

// ---- Crashes

// readCrashRecord(buffer): JSON of the event, null when it is none.
void readCrashRecord(ProbeArguments args) {
  auto event = platform::ReadCrashRecord(Bytes(args[0]));
  if (!event) return args.GetReturnValue().SetNull();
  ReturnJSON(args, TsSerialisedEvent(*event));
}

// The reason why an address is no project's; empty when it is.
void whyNoProject(ProbeArguments args) {
  const auto client = platform::CrashReporter::ForProject(StdText(args[0]), {});
  ReturnText(args, client ? "" : client.error().message);
}

// Uses up the stack of a thread.
__attribute__((noinline, no_sanitize("address"))) int Overflow(int depth) {
  volatile char room[4096];
  room[depth % 4096] = 1;
  return depth < 0 ? 0 : Overflow(depth + 1) + room[depth % 4096];
}

// crash(how), with and without a thread of its own.
void crash(ProbeArguments args) {
  const std::string how = StdText(args[0]);
  const auto isIn = [&how](const char* word) { return how.find(word) != std::string::npos; };
  const auto work = [&] {
    if (isIn("overflow")) args.GetReturnValue().Set(Overflow(0));
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
void crashEverywhere(ProbeArguments) {
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
void handleCrashes(ProbeArguments) {
  struct sigaction action {};
  action.sa_flags = SA_SIGINFO;
  action.sa_sigaction = [](int, siginfo_t* information, void* context) {
    _exit(information != nullptr && context != nullptr ? 42 : 43);
  };
  for (const int signal : {SIGSEGV, SIGABRT, SIGTRAP}) sigaction(signal, &action, nullptr);
}

// Has a forked process crash; gives the signal that ended it.
void crashInFork(ProbeArguments args) {
  const pid_t child = fork();
  if (child == 0) platform::CrashReporter::Crash();
  int status = 0;
  waitpid(child, &status, 0);
  args.GetReturnValue().Set(WIFSIGNALED(status) ? WTERMSIG(status) : 0);
}

// logFromThread(name, text): the thread that logs has that name.
void logFromThread(ProbeArguments args) {
  std::thread([name = StdText(args[0]), text = StdText(args[1])] {
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
