#include "TessaroNative/FunctionTable.h"

#include <array>
#include <utility>

#include "TessaroNative/Dispatch.h"
#include "TessaroNative/handlers/Handlers.h"

namespace {

constexpr char kTableFile[] = __FILE__;

#define LANDED(name) #name, name, #name
// The capability behind the name is still missing: callers get a warning in the log and the "nothing" result.
#define PENDING(name) #name, nullptr, #name

using enum Nothing;
using enum Needs;

// clang-format off
constexpr ScriptFunction kFunctions[] = {
    {LANDED(loadFScript), Undefined, Foundation, {}},
    {LANDED(setCurrentURL), Null, Bridge, {}},
    {LANDED(setCurrentStateCallbackFunction), Null, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(getBundlePath), EmptyText, Foundation, {}},
    {LANDED(getPreferredLanguages), EmptyText, Foundation, {}},
    {LANDED(getPasswordForAccount), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(setPasswordForAccount), Undefined, Foundation, {Either(2, 3)}},
    {LANDED(removePasswordForAccount), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(removeAllPasswords), Undefined, Foundation, {}},
    {LANDED(deliverUserNotification), Undefined, Foundation,
     {Exactly(10), Arg(0).IsString(), Arg(1).IsStringOrNullOrUndefined(), Arg(2).IsStringOrNullOrUndefined(),
      Arg(3).IsStringOrNullOrUndefined(), Arg(4).IsStringOrNullOrUndefined(), Arg(6).IsStringOrNullOrUndefined(),
      Arg(8).IsStringOrNullOrUndefined()}},
    {LANDED(removeUserNotifications), Undefined, Foundation, {}},
    {LANDED(removeUserNotification), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(setNotificationCallbackFunction), Undefined, Bridge, {}},
    {LANDED(getSoundNames), EmptyArray, Foundation, {}},
    {LANDED(playSoundWithName), False, Foundation, {}},
    {LANDED(addToolbarToWindow), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {LANDED(setToolbarCallbackFunctions), Undefined, Bridge, {Exactly(3)}},
    {LANDED(reenableWindowUpdates), Undefined, WindowServer, {}},
    {LANDED(setWindowNotificationCallbackFunction), Undefined, Bridge, {}},
    {LANDED(hasMainWindow), False, WindowServer, {Exactly(0)}},
    {LANDED(hasKeyWindow), False, WindowServer, {Exactly(0)}},
    {LANDED(hasSheets), False, WindowServer, {Exactly(1), Arg(0).IsObject()}},
    {LANDED(closeMainWindow), Undefined, WindowServer, {Exactly(0)}},
    {LANDED(closeKeyWindow), Undefined, WindowServer, {Exactly(0)}},
    {LANDED(hideWindowContent), Undefined, WindowServer, {Exactly(2), Arg(0).IsObject(), Arg(1).IsInt32()}},
    {LANDED(validateToolbarItems), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(selectToolbarItem), Undefined, WindowServer, {Exactly(2), Arg(0).IsInt32(), Arg(1).IsString()}},
    {LANDED(toggleToolbarVisibility), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(isToolbarVisible), False, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(customizeToolbar), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(changeImageOfToolbarItem), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsInt32(), Arg(1).IsString(), Arg(2).IsString()}},
    {LANDED(showAddTabButton), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(hideAddTabButton), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {LANDED(updateMainMenuMenuItem), Zero, WindowServer, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {LANDED(updateMainMenuMenuItemWithCommandId), Zero, WindowServer,
     {Exactly(2), Arg(0).IsInt32(), Arg(1).IsString()}},
    {LANDED(isWebImagePath), Zero, Foundation, {Arg(0).IsString()}},
    {LANDED(scaleImage), Null, Foundation,
     {Arg(0).IsString(), Arg(1).IsString(), Arg(2).IsInt32(), Arg(3).IsInt32()}},
    {LANDED(saveGeneralPasteboard), False, Foundation, {}},
    {LANDED(restoreGeneralPasteboard), False, Foundation, {}},
    {LANDED(writeFileContentsToGeneralPasteboard), False, Foundation, {Arg(0).IsString()}},
    {LANDED(getValueOfPasteboardType), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(doesPasteboardContainImage), Zero, Foundation, {Exactly(0)}},
    {LANDED(dropFiles), False, WindowServer, {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsString()}},
    {LANDED(setDragAndDropCallbackFunction), Undefined, Bridge, {}},
    {LANDED(setKeyboardModifierKeysCallbackFunction), Undefined, Bridge, {}},
    {LANDED(openSupportAndFeedbackWindow), Undefined, WindowServer,
     {Exactly(5), Arg(0).IsString(), Arg(1).IsString(), Arg(2).IsStringOrNull(), Arg(3).IsStringOrNull(),
      Arg(4).IsStringOrNull()}},
    {LANDED(attachFilesToSupportAndFeedbackWindow), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {LANDED(annotateImage), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {LANDED(imageFromPasteboard), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(takeScreenRecording), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {LANDED(setupCrashReporter), Undefined, Foundation, {Exactly(0)}},
    {LANDED(testCrash), Undefined, Foundation, {}},
    {LANDED(checkForUpdates), Undefined, Foundation, {Exactly(2), Arg(0).IsBoolean(), Arg(1).IsBoolean()}},
    {LANDED(setAppcastParameterCallback), Undefined, Foundation, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(fetchAppcast), Undefined, Foundation, {Exactly(0)}},
    {LANDED(setQueryWindowTraitCallbackFunction), Undefined, Bridge, {Exactly(1)}},
    {"getFindStringFromPasteboard", getFindTextFromPasteboard, "getFindTextFromPasteboard", Null, Foundation, {}},
    {"setFindStringToPasteboard", getFindStringFromPasteboard, "getFindStringFromPasteboard", Undefined, Foundation, {Exactly(1)}},
    {LANDED(applicationsForFileExtension), Null, Foundation, {Exactly(3)}},
    {LANDED(applicationsForScheme), Undefined, Foundation, {Exactly(3)}},
    {LANDED(bundleId), Null, Foundation, {Exactly(0)}},
    {LANDED(defaultApplicationForScheme), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(setDefaultApplicationForScheme), Zero, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {LANDED(iconForFileExtension), Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {LANDED(openFile), Zero, Foundation, {Exactly(3)}},
    {LANDED(openInfoForFile), Undefined, Foundation, {Exactly(1)}},
    {LANDED(quickLook), Undefined, Foundation,
     {Exactly(4), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsInt32(), Arg(3).IsFunction()}},
    {LANDED(shareFiles), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsString()}},
    {LANDED(generatePreview), Undefined, Foundation,
     {Exactly(4), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString(), Arg(3).IsFunction()}},
    {LANDED(isApplicationInstalled), False, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(iconForApplication), Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {LANDED(applicationName), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(importIntoApplication), Undefined, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {LANDED(printPath), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(clipPage), Undefined, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsObject()}},
    {LANDED(installedClipperApps), Null, Foundation, {Exactly(0)}},
    {LANDED(setSearchServiceCallbackFunction), Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(setComposeOutgoingMessageCallbackFunction), Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(setNetworkReachabilityCallbackFunction), Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(isNetworkReachable), False, Foundation, {Exactly(0)}},
    {LANDED(setUserDefault), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {LANDED(getUserDefault), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(removeUserDefault), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(synchronizeUserDefaults), Undefined, Foundation, {Exactly(0)}},
    {LANDED(getStartAtLogin), False, Foundation, {Exactly(0)}},
    {LANDED(migrateStartAtLogin), Undefined, Foundation, {Exactly(0)}},
    {LANDED(setStartAtLogin), False, Foundation, {Exactly(1), Arg(0).IsBoolean()}},
    {LANDED(setStatusItemTitle), Undefined, WindowServer,
     {Exactly(2), Arg(0).IsStringOrNull(), Arg(1).IsBooleanOrNull()}},
    {LANDED(setStatusItemMenuNeedsUpdateCallbackFunction), Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {LANDED(setupMenuWillShowNotification), Undefined, WindowServer, {Exactly(0)}},
    {LANDED(getBuildNumber), Null, Foundation, {Exactly(0)}},
    {LANDED(getReleaseString), EmptyText, Foundation, {Exactly(0)}},
    {LANDED(pickEmailAddresses), Undefined, WindowServer, {Exactly(2), Arg(0).IsObject(), Arg(1).IsString()}},
    {LANDED(recipientsForGroupName), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(hasPreviousVersion), False, Foundation, {Exactly(0)}},
    {LANDED(getMigrationInfo), Null, Foundation, {Exactly(1), Arg(0).IsStringOrNullOrUndefined()}},
    {LANDED(getTextReplacements), Null, Foundation, {}},
    {LANDED(startMonitoringKeyboardShortcuts), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {LANDED(stopMonitoringKeyboardShortcuts), Undefined, WindowServer, {Exactly(0)}},
    {LANDED(bindGlobalShortcutWithDefaultsKey), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {LANDED(globalShortcutDescriptionForDefaultsKey), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {LANDED(modifierKeys), Null, WindowServer, {Exactly(0)}},
    {LANDED(uninstallPDFServices), Undefined, Foundation, {Exactly(0)}},
    {LANDED(showFileDialog), Undefined, Foundation,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsFunction()}},
    {LANDED(registerAppleEventForTimingApp), Undefined, Foundation, {Exactly(1), Arg(0).IsFunction()}},
    {"createRequest", TsCreateRequest, "TsCreateRequest", Null, Foundation, {AtLeast(1), Arg(0).IsString()}},
    {"isAppHidden", TsIsAppHidden, "TsIsAppHidden", False, WindowServer, {}},
    {"writeFile", TsWriteFile, "TsWriteFile", Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsObject(), Arg(2).IsBoolean()}},
    {"performService", HandlePerformService, "TsPerformService", Undefined, Foundation,
     {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {"resizeWindowContent", TsResizeWindowContent, "TsResizeWindowContent", Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsInt32(), Arg(2).IsInt32()}},
    {LANDED(isDarkMode), False, Bridge, {Exactly(0)}},
    {LANDED(macOSVersion), Undefined, Foundation, {Exactly(0)}},
};
// clang-format on

#undef LANDED
#undef PENDING

// The engine gives a native callback no cheap way to know its own row, so each row has an instance of its own.
template <std::size_t row>
void Enter(const v8::FunctionCallbackInfo<v8::Value>& args) {
  Dispatch(kTableFile, kFunctions[row], args);
}

template <std::size_t... rows>
constexpr std::array<ScriptHandler, sizeof...(rows)> Entrances(std::index_sequence<rows...>) {
  return {Enter<rows>...};
}

}  // namespace

std::span<const ScriptFunction> FunctionTable() { return kFunctions; }

void RegisterFunctions(v8::Local<v8::Object> exports) {
  static constexpr auto kEntrances = Entrances(std::make_index_sequence<std::size(kFunctions)>());
  for (std::size_t row = 0; row < kEntrances.size(); ++row) {
    NODE_SET_METHOD(exports, kFunctions[row].name, kEntrances[row]);
  }
}
