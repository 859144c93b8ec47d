#import <Foundation/Foundation.h>
#import <objc/runtime.h>
#include <uv.h>

#include <chrono>
#include <pugixml.hpp>

#include "Application/AtomApplication.h"
#include "Contacts/TsRecipient.h"
#import "Keychain/TsKeyChain.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Linux/AppKit/CocoaAdditions.h"
#include "Probe.h"
#import "StatusItem/TsStatusItemController.h"
#include "Utilities/TsCallbackSlot.h"
#include "Utilities/TsJSON.h"

// Probes of the benchmarks alone.

namespace platform = tessaro::platform;

namespace {

// The number of the update's item, or -1.
int decideOnly(std::string_view feed, std::string current, std::string system, std::string channel) {
  const auto decision = platform::DecideUpdate(feed, {current, system, channel, {"linux", {"de", "en"}}, "3.7"});
  return decision && decision->update ? static_cast<int>(*decision->update) : -1;
}

// Nanoseconds of each passage through a door, without the script boundary.
template <typename Door>
id TimeDoor(int rounds, Door door) {
  NSMutableArray* samples = [NSMutableArray array];
  for (int round = 0; round < rounds; ++round) {
    const auto start = std::chrono::steady_clock::now();
    @autoreleasepool {
      static_cast<void>(door());
    }
    const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
    [samples addObject:@(elapsed.count())];
  }
  return samples;
}

id timeRead(NSString* text, int rounds) {
  return TimeDoor(rounds, [&] { return TsConvertFromJSONString(text, nullptr); });
}

id timeWrite(NSString* text, int rounds) {
  id object = TsConvertFromJSONString(text, nullptr);
  return TimeDoor(rounds, [&] { return TsConvertToJSONString(object); });
}

// Nanoseconds of reading a text, and of writing it again; how many recipients it has, and its length then.
id timeText(NSString* text) {
  const std::uint64_t start = uv_hrtime();
  NSArray* recipients = [TsRecipient fromString:text];
  const std::uint64_t parsed = uv_hrtime();
  NSString* written = [TsRecipient toString:recipients];
  const std::uint64_t end = uv_hrtime();
  return @[ @(double(parsed - start)), @(double(end - parsed)), @([recipients count]), @([written length]) ];
}

// Nanoseconds of a group's expansion, and how many recipients it has.
id timeGroup(NSString* name) {
  const std::uint64_t start = uv_hrtime();
  NSArray* recipients = TsRecipientsForGroupName(name);
  return @[ @(double(uv_hrtime() - start)), @([recipients count]) ];
}

id NoPassword(id, SEL, NSString*) { return nil; }

// From now on the keychain takes no time, and has nothing.
void silenceKeychain() {
  const Method method = class_getInstanceMethod([TsKeychain class], @selector(passwordForAccount:));
  method_setImplementation(method, reinterpret_cast<IMP>(NoPassword));
}

// Nanoseconds that the steps of building the item's menu take: asking script, reading its JSON, making the menu.
id timeRebuild() {
  const tessaro::platform::WithoutUserShortcuts asForTheTray;
  TsStatusItemController* controller = [TsStatusItemController sharedInstance];
  const std::uint64_t start = uv_hrtime();
  NSString* json = TsCallback(TsSlot::StatusItemMenuNeedsUpdate).CallForString({@"status-item", true});
  const std::uint64_t asked = uv_hrtime();
  NSDictionary* contents = TsConvertFromJSONString(json, nullptr);
  const std::uint64_t read = uv_hrtime();
  const TsStatusMenuSource script = [controller menuNeedsUpdateCallback];
  [controller setMenuNeedsUpdateCallback:[contents](NSString*, bool) { return contents; }];
  [controller menuNeedsUpdate:[[controller statusItem] menu] type:@"status-item" includeMessage:YES];
  const std::uint64_t built = uv_hrtime();
  [controller setMenuNeedsUpdateCallback:script];
  return @[ @(double(asked - start)), @(double(read - asked)), @(double(built - read)) ];
}

// The milliseconds that parsing a file takes, from the disk to the document; a negative number when it is no XML.
double timeParse(std::string file) {
  const auto start = std::chrono::steady_clock::now();
  pugi::xml_document document;
  if (!document.load_file(file.c_str())) return -1;
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// From a script's text to containers.
bool reads(NSString* text) { return TsConvertFromJSONString(text, nullptr) != nil; }

void sendEvent(NSEvent* event, int count) {
  for (int i = 0; i < count; ++i) TsSendEvent(NSApp, @selector(sendEvent:), event);
}

void sendEventWithoutRouting(NSEvent* event, int count) {
  for (int i = 0; i < count; ++i) [NSApp performSelector:@selector(tsOrigSendEvent:) withObject:event];
}

PROBES("bench", timeRebuild, decideOnly, timeRead, timeWrite, timeText, timeGroup, silenceKeychain, timeParse, reads,
       sendEvent, sendEventWithoutRouting);

}  // namespace
