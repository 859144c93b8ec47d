#include "Settings/TsLoginItem.h"

#import <Foundation/Foundation.h>

#include <algorithm>
#include <optional>
#include <vector>

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

template <typename Condition>
std::optional<platform::LoginItem> FirstItem(const Condition& condition) {
  const auto items = platform::LoginItems();
  if (!items) return std::nullopt;
  const auto found = std::find_if(items->begin(), items->end(), condition);
  return found != items->end() ? std::optional(*found) : std::nullopt;
}

std::optional<platform::LoginItem> ItemOf(const platform::LoginApplication& application) {
  return FirstItem([&](const platform::LoginItem& item) { return platform::Starts(item, application); });
}

}  // namespace

bool TsStartsAtLogin() { return ItemOf(ThisApplication()).has_value(); }

void TsSetStartsAtLogin(bool starts) {
  const auto application = ThisApplication();
  const auto item = ItemOf(application);
  if (starts && !item) platform::InsertLoginItem(application);
  if (!starts && item) platform::RemoveLoginItem(*item);
}

void TsRemovePreviousVersionsLoginItem() {
  const auto item =
      FirstItem([](const platform::LoginItem& each) { return each.displayName == kPreviousVersionsName; });
  if (item) platform::RemoveLoginItem(*item);
}
