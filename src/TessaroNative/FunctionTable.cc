#include "TessaroNative/FunctionTable.h"

#include <array>
#include <utility>

#include "TessaroNative/Dispatch.h"

namespace {

constexpr char kTableFile[] = __FILE__;

// A handler of the script function's own name.
#define CALLS(function) #function, #function, function
// No handler: the arguments, in their order, fill the slots.
#define FILLS(function) #function, #function

using enum Nothing;
using enum Needs;
using enum TsSlot;

// clang-format off
constexpr ScriptFunction kFunctions[] = {
    {CALLS(loadFScript), Undefined, Foundation, {}},
    {CALLS(setCurrentURL), Null, Bridge, {}},
    {FILLS(setCurrentStateCallbackFunction), Slots{CurrentState}, Null, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {CALLS(getBundlePath), EmptyText, Foundation, {}},
    {CALLS(getPreferredLanguages), EmptyText, Foundation, {}},
    {CALLS(getPasswordForAccount), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(setPasswordForAccount), Undefined, Foundation, {Either(2, 3)}},
    {CALLS(removePasswordForAccount), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(removeAllPasswords), Undefined, Foundation, {}},
    {CALLS(deliverUserNotification), Undefined, Foundation,
     {Exactly(10), Arg(0).IsString(), Arg(1).IsStringOrNullOrUndefined(), Arg(2).IsStringOrNullOrUndefined(),
      Arg(3).IsStringOrNullOrUndefined(), Arg(4).IsStringOrNullOrUndefined(), Arg(6).IsStringOrNullOrUndefined(),
      Arg(8).IsStringOrNullOrUndefined()}},
    {CALLS(removeUserNotifications), Undefined, Foundation, {}},
    {CALLS(removeUserNotification), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {FILLS(setNotificationCallbackFunction), Slots{NotificationActivation}, Undefined, Bridge, {}},
    {CALLS(getSoundNames), EmptyArray, Foundation, {}},
    {CALLS(playSoundWithName), False, Foundation, {}},
    {CALLS(addToolbarToWindow), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {FILLS(setToolbarCallbackFunctions), Slots{ToolbarValidation, ToolbarAction, ToolbarAddTab}, Undefined, Bridge, {Exactly(3)}},
    {CALLS(reenableWindowUpdates), Undefined, WindowServer, {}},
    {FILLS(setWindowNotificationCallbackFunction), Slots{WindowNotification}, Undefined, Bridge, {}},
    {CALLS(hasMainWindow), False, WindowServer, {Exactly(0)}},
    {CALLS(hasKeyWindow), False, WindowServer, {Exactly(0)}},
    {CALLS(hasSheets), False, WindowServer, {Exactly(1), Arg(0).IsObject()}},
    {CALLS(closeMainWindow), Undefined, WindowServer, {Exactly(0)}},
    {CALLS(closeKeyWindow), Undefined, WindowServer, {Exactly(0)}},
    {CALLS(hideWindowContent), Undefined, WindowServer, {Exactly(2), Arg(0).IsObject(), Arg(1).IsInt32()}},
    {CALLS(validateToolbarItems), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(selectToolbarItem), Undefined, WindowServer, {Exactly(2), Arg(0).IsInt32(), Arg(1).IsString()}},
    {CALLS(toggleToolbarVisibility), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(isToolbarVisible), False, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(customizeToolbar), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(changeImageOfToolbarItem), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsInt32(), Arg(1).IsString(), Arg(2).IsString()}},
    {CALLS(showAddTabButton), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(hideAddTabButton), Undefined, WindowServer, {Exactly(1), Arg(0).IsInt32()}},
    {CALLS(updateMainMenuMenuItem), Zero, WindowServer, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {CALLS(updateMainMenuMenuItemWithCommandId), Zero, WindowServer,
     {Exactly(2), Arg(0).IsInt32(), Arg(1).IsString()}},
    {CALLS(isWebImagePath), Zero, Foundation, {Arg(0).IsString()}},
    {CALLS(scaleImage), Null, Foundation,
     {Arg(0).IsString(), Arg(1).IsString(), Arg(2).IsInt32(), Arg(3).IsInt32()}},
    {CALLS(saveGeneralPasteboard), False, Foundation, {}},
    {CALLS(restoreGeneralPasteboard), False, Foundation, {}},
    {CALLS(writeFileContentsToGeneralPasteboard), False, Foundation, {Arg(0).IsString()}},
    {CALLS(getValueOfPasteboardType), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(doesPasteboardContainImage), Zero, Foundation, {Exactly(0)}},
    {CALLS(dropFiles), False, WindowServer, {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsString()}},
    {FILLS(setDragAndDropCallbackFunction), Slots{DragAndDrop}, Undefined, Bridge, {}},
    {FILLS(setKeyboardModifierKeysCallbackFunction), Slots{KeyboardModifierKeys}, Undefined, Bridge, {}},
    {CALLS(openSupportAndFeedbackWindow), Undefined, WindowServer,
     {Exactly(5), Arg(0).IsString(), Arg(1).IsString(), Arg(2).IsStringOrNull(), Arg(3).IsStringOrNull(),
      Arg(4).IsStringOrNull()}},
    {CALLS(attachFilesToSupportAndFeedbackWindow), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {CALLS(annotateImage), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {CALLS(imageFromPasteboard), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(takeScreenRecording), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {CALLS(setupCrashReporter), Undefined, Foundation, {Exactly(0)}},
    {CALLS(testCrash), Undefined, Foundation, {}},
    {CALLS(checkForUpdates), Undefined, Foundation, {Exactly(2), Arg(0).IsBoolean(), Arg(1).IsBoolean()}},
    {CALLS(setAppcastParameterCallback), Undefined, Foundation, {Exactly(1), Arg(0).IsFunction()}},
    {CALLS(fetchAppcast), Undefined, Foundation, {Exactly(0)}},
    {FILLS(setQueryWindowTraitCallbackFunction), Slots{QueryWindowTrait}, Undefined, Bridge, {Exactly(1)}},
    // The host's names for the find string; their handlers are crossed on purpose.
    {"getFindStringFromPasteboard", "getFindTextFromPasteboard", getFindTextFromPasteboard, Null, Foundation, {}},
    {"setFindStringToPasteboard", "getFindStringFromPasteboard", getFindStringFromPasteboard, Undefined, Foundation, {Exactly(1)}},
    {CALLS(applicationsForFileExtension), Null, Foundation, {Exactly(3)}},
    {CALLS(applicationsForScheme), Undefined, Foundation, {Exactly(3)}},
    {CALLS(bundleId), Null, Foundation, {Exactly(0)}},
    {CALLS(defaultApplicationForScheme), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(setDefaultApplicationForScheme), Zero, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {CALLS(iconForFileExtension), Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {CALLS(openFile), Zero, Foundation, {Exactly(3)}},
    {CALLS(openInfoForFile), Undefined, Foundation, {Exactly(1)}},
    {CALLS(quickLook), Undefined, Foundation,
     {Exactly(4), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsInt32(), Arg(3).IsFunction()}},
    {CALLS(shareFiles), Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsString()}},
    {CALLS(generatePreview), Undefined, Foundation,
     {Exactly(4), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString(), Arg(3).IsFunction()}},
    {CALLS(isApplicationInstalled), False, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(iconForApplication), Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsInt32(), Arg(2).IsString()}},
    {CALLS(applicationName), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(importIntoApplication), Undefined, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {CALLS(printPath), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(clipPage), Undefined, Foundation, {Exactly(2), Arg(0).IsString(), Arg(1).IsObject()}},
    {CALLS(installedClipperApps), Null, Foundation, {Exactly(0)}},
    {FILLS(setSearchServiceCallbackFunction), Slots{SearchService}, Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {FILLS(setComposeOutgoingMessageCallbackFunction), Slots{ComposeOutgoingMessage}, Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {FILLS(setNetworkReachabilityCallbackFunction), Slots{Reachability}, Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {CALLS(isNetworkReachable), False, Foundation, {Exactly(0)}},
    {CALLS(setUserDefault), Undefined, Foundation, {Exactly(2), Arg(0).IsString()}},
    {CALLS(getUserDefault), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(removeUserDefault), Undefined, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(synchronizeUserDefaults), Undefined, Foundation, {Exactly(0)}},
    {CALLS(getStartAtLogin), False, Foundation, {Exactly(0)}},
    {CALLS(migrateStartAtLogin), Undefined, Foundation, {Exactly(0)}},
    {CALLS(setStartAtLogin), False, Foundation, {Exactly(1), Arg(0).IsBoolean()}},
    {CALLS(setStatusItemTitle), Undefined, WindowServer,
     {Exactly(2), Arg(0).IsStringOrNull(), Arg(1).IsBooleanOrNull()}},
    {FILLS(setStatusItemMenuNeedsUpdateCallbackFunction), Slots{StatusItemMenuNeedsUpdate}, Undefined, Bridge, {Exactly(1), Arg(0).IsFunction()}},
    {CALLS(setupMenuWillShowNotification), Undefined, WindowServer, {Exactly(0)}},
    {CALLS(getBuildNumber), Null, Foundation, {Exactly(0)}},
    {CALLS(getReleaseString), EmptyText, Foundation, {Exactly(0)}},
    {CALLS(pickEmailAddresses), Undefined, WindowServer, {Exactly(2), Arg(0).IsObject(), Arg(1).IsString()}},
    {CALLS(recipientsForGroupName), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(hasPreviousVersion), False, Foundation, {Exactly(0)}},
    {CALLS(getMigrationInfo), Null, Foundation, {Exactly(1), Arg(0).IsStringOrNullOrUndefined()}},
    {CALLS(getTextReplacements), Null, Foundation, {}},
    {CALLS(startMonitoringKeyboardShortcuts), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {CALLS(stopMonitoringKeyboardShortcuts), Undefined, WindowServer, {Exactly(0)}},
    {CALLS(bindGlobalShortcutWithDefaultsKey), Undefined, WindowServer, {Exactly(1), Arg(0).IsString()}},
    {CALLS(globalShortcutDescriptionForDefaultsKey), Null, Foundation, {Exactly(1), Arg(0).IsString()}},
    {CALLS(modifierKeys), Null, WindowServer, {Exactly(0)}},
    {CALLS(uninstallPDFServices), Undefined, Foundation, {Exactly(0)}},
    {CALLS(showFileDialog), Undefined, Foundation,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsString(), Arg(2).IsFunction()}},
    {CALLS(registerAppleEventForTimingApp), Undefined, Foundation, {Exactly(1), Arg(0).IsFunction()}},
    {"createRequest", "TsCreateRequest", TsCreateRequest, Null, Foundation, {AtLeast(1), Arg(0).IsString()}},
    {"isAppHidden", "TsIsAppHidden", TsIsAppHidden, False, WindowServer, {}},
    {"writeFile", "TsWriteFile", TsWriteFile, Undefined, Foundation,
     {Exactly(3), Arg(0).IsString(), Arg(1).IsObject(), Arg(2).IsBoolean()}},
    {"performService", "TsPerformService", HandlePerformService, Undefined, Foundation,
     {Exactly(2), Arg(0).IsString(), Arg(1).IsString()}},
    {"resizeWindowContent", "TsResizeWindowContent", TsResizeWindowContent, Undefined, WindowServer,
     {Exactly(3), Arg(0).IsObject(), Arg(1).IsInt32(), Arg(2).IsInt32()}},
    {CALLS(isDarkMode), False, Bridge, {Exactly(0)}},
    {CALLS(macOSVersion), Undefined, Foundation, {Exactly(0)}},
};
// clang-format on

#undef CALLS
#undef FILLS

// The engine gives a native callback no cheap way to know its own row, so each row has an instance of its own.
template <std::size_t row>
void Enter(const ScriptArguments& args) {
  Dispatch(kTableFile, kFunctions[row], args);
}

template <std::size_t... rows>
constexpr std::array<ScriptHandler*, sizeof...(rows)> Entrances(std::index_sequence<rows...>) {
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
