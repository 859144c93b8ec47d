#include "Platform/Applications.h"

#import <ScriptingBridge/ScriptingBridge.h>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/macOS/Guarded.h"

// Preview's scripting interface, as its definition has it.
@interface NSObject (TsPreviewApplication)
- (void)print:(id)document printDialog:(BOOL)showsDialog withProperties:(NSDictionary*)properties;
- (void)quitSaving:(unsigned int)saving;
@end

// Preview, driven by Apple events, with its print dialog; one that had to be started for it quits afterwards. Any
// thread. The user consents to this application scripting Preview; the host's Info.plist needs
// NSAppleEventsUsageDescription, and a hardened host the entitlement com.apple.security.automation.apple-events.
namespace tessaro::platform {

namespace {

constexpr unsigned int kWithoutSaving = 'no  ';

std::string Print(const std::string& path) {
  SBApplication* preview = [SBApplication applicationWithBundleIdentifier:@"com.apple.Preview"];
  id printer = preview;
  if (![printer respondsToSelector:@selector(print:printDialog:withProperties:)])
    return "com.apple.Preview doesn't know how to print.";
  const BOOL wasRunning = [preview isRunning];
  [preview activate];
  [printer print:[NSURL fileURLWithPath:TsNSString(path)] printDialog:YES withProperties:nil];
  if (!wasRunning) [printer quitSaving:kWithoutSaving];
  return {};
}

}  // namespace

Result<void> PrintFile(const std::string& path) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    reason =
        [[NSFileManager defaultManager] isReadableFileAtPath:TsNSString(path)] ? Print(path) : "there is no such file";
  });
  if (!failure.empty()) return Fail(failure);
  if (!reason.empty()) return Fail(reason);
  return {};
}

}  // namespace tessaro::platform
