#include "Platform/LoginItems.h"

#import <ServiceManagement/ServiceManagement.h>

#include <functional>
#include <optional>

#include "Base/TsString.h"
#include "Platform/macOS/CFRef.h"
#include "Platform/macOS/Guarded.h"
#include "Platform/macOS/SharedFileList.h"

// From macOS 13 on SMAppService, which knows this process's own application only, and may want the user's approval in
// System Settings. Before, the session's shared file list. No other consent. Any thread.
namespace tessaro::platform {

namespace {

bool IsThisProcess(const LoginApplication& application) {
  return application.bundlePath == TsStdString([[NSBundle mainBundle] bundlePath]);
}

Result<void> ResultOf(const std::string& failure, const std::string& reason) {
  if (!failure.empty()) return Fail(failure);
  if (!reason.empty()) return Fail(reason);
  return {};
}

// ---- macOS 13 and later

API_AVAILABLE(macos(13.0)) bool IsRegistered() {
  return [[SMAppService mainAppService] status] == SMAppServiceStatusEnabled;
}

API_AVAILABLE(macos(13.0)) std::string Register(bool starts) {
  SMAppService* service = [SMAppService mainAppService];
  NSError* error = nil;
  const BOOL isDone = starts ? [service registerAndReturnError:&error] : [service unregisterAndReturnError:&error];
  if (!isDone) return ReasonOf(error);
  if (starts && [service status] == SMAppServiceStatusRequiresApproval)
    return "the user has to approve it in System Settings";
  return {};
}

// ---- Before

CFRef<LSSharedFileListRef> SessionList() {
  return CFRef(LSSharedFileListCreate(kCFAllocatorDefault, kLSSharedFileListSessionLoginItems, nullptr));
}

// The first item of which `isWanted` is true.
CFRef<LSSharedFileListItemRef> ItemIn(LSSharedFileListRef list,
                                      const std::function<bool(LSSharedFileListItemRef)>& isWanted) {
  const CFRef<CFArrayRef> items(list != nullptr ? LSSharedFileListCopySnapshot(list, nullptr) : nullptr);
  for (CFIndex i = 0; items && i < CFArrayGetCount(items.get()); ++i) {
    auto* const item = static_cast<LSSharedFileListItemRef>(const_cast<void*>(CFArrayGetValueAtIndex(items.get(), i)));
    if (!isWanted(item)) continue;
    CFRetain(item);
    return CFRef(item);
  }
  return {};
}

bool LeadsTo(LSSharedFileListItemRef item, const std::string& bundlePath) {
  const UInt32 silently = kLSSharedFileListNoUserInteraction | kLSSharedFileListDoNotMountVolumes;
  const CFRef<CFURLRef> url(LSSharedFileListItemCopyResolvedURL(item, silently, nullptr));
  return url && TsStdString([(NSURL*)url.get() path]) == bundlePath;
}

CFRef<LSSharedFileListItemRef> ItemOf(LSSharedFileListRef list, const LoginApplication& application) {
  return ItemIn(list, [&](LSSharedFileListItemRef item) { return LeadsTo(item, application.bundlePath); });
}

std::string Insert(LSSharedFileListRef list, const LoginApplication& application) {
  const CFRef<CFURLRef> url = NewFileURL(application.bundlePath);
  const CFRef<LSSharedFileListItemRef> inserted(LSSharedFileListInsertItemURL(
      list, kLSSharedFileListItemBeforeFirst, nullptr, nullptr, url.get(), nullptr, nullptr));
  return inserted ? "" : "the session's list takes no item";
}

std::string SetInList(const LoginApplication& application, bool starts) {
  const auto list = SessionList();
  if (!list) return "this session has no list";
  const auto item = ItemOf(list.get(), application);
  if (starts == static_cast<bool>(item)) return {};
  if (starts) return Insert(list.get(), application);
  return LSSharedFileListItemRemove(list.get(), item.get()) == noErr ? "" : "the session's list keeps the item";
}

std::string RemoveNamedFromList(const std::string& displayName) {
  const auto list = SessionList();
  const auto item = ItemIn(list.get(), [&](LSSharedFileListItemRef each) {
    return TextOf(CFRef(LSSharedFileListItemCopyDisplayName(each)).get()) == displayName;
  });
  if (!item) return "the session has no item of that name";
  return LSSharedFileListItemRemove(list.get(), item.get()) == noErr ? "" : "the session's list keeps the item";
}

}  // namespace

bool StartsAtLogin(const LoginApplication& application) noexcept {
  bool starts = false;
  const std::string failure = Guarded([&] {
    if (@available(macOS 13.0, *))
      starts = IsThisProcess(application) && IsRegistered();
    else
      starts = static_cast<bool>(ItemOf(SessionList().get(), application));
  });
  return failure.empty() && starts;
}

Result<void> SetStartsAtLogin(const LoginApplication& application, bool starts) noexcept {
  std::string reason;
  const std::string failure = Guarded([&] {
    if (@available(macOS 13.0, *)) {
      if (!IsThisProcess(application))
        reason = "macOS 13 and later let an application register itself only";
      else if (starts != IsRegistered())
        reason = Register(starts);
    } else {
      reason = SetInList(application, starts);
    }
  });
  return ResultOf(failure, reason);
}

Result<void> RemoveLoginItemNamed(const std::string& displayName) noexcept {
  if (@available(macOS 13.0, *)) return Fail("macOS 13 and later don't let login items be listed");
  std::string reason;
  const std::string failure = Guarded([&] { reason = RemoveNamedFromList(displayName); });
  return ResultOf(failure, reason);
}

}  // namespace tessaro::platform
