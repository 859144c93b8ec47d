#include "Settings/TsLoginItem.h"

#import <Foundation/Foundation.h>

#include "Base/TsString.h"
#include "Extensions/NSApplication+TsBundle.h"
#include "Platform/LoginItems.h"

namespace platform = tessaro::platform;

namespace {

constexpr char kPreviousVersionsName[] = "Tessaro 3";

platform::LoginApplication ThisApplication() {
  NSBundle* bundle = [NSBundle mainBundle];
  NSString* name = [NSApplication ts_bundleName];
  if (name == nil) name = [[NSProcessInfo processInfo] processName];
  return {TsStdString([bundle bundlePath]), TsStdString([bundle executablePath]), TsStdString(name)};
}

}  // namespace

bool TsStartsAtLogin() { return platform::StartsAtLogin(ThisApplication()); }

// Failures are silent: script reads the state back.
void TsSetStartsAtLogin(bool starts) { static_cast<void>(platform::SetStartsAtLogin(ThisApplication(), starts)); }

void TsRemovePreviousVersionsLoginItem() { static_cast<void>(platform::RemoveLoginItemNamed(kPreviousVersionsName)); }
