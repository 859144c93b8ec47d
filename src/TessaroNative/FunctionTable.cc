#include "TessaroNative/FunctionTable.h"

#include <utility>

namespace {

constexpr char kTableFile[] = __FILE__;

// A handler of the script function's own name.
#define CALLS(function) #function, #function, function
// No handler: the arguments, in their order, fill the slots.
#define FILLS(function) #function, #function

#define COUNT(count) CONDITION(args.Length() == count)
#define ARG(n, is) CONDITION(args[n]->is())
#define ARG_OR_NULL(n, is) CONDITION(args[n]->is() || args[n]->IsNull())
#define ANY_STRING(n) CONDITION(args[n]->IsString() || args[n]->IsNull() || args[n]->IsUndefined())

using enum Nothing;
using enum Needs;
using enum TsSlot;

// clang-format off
constexpr ScriptFunction kFunctions[] = {
    {CALLS(loadFScript), Undefined, Foundation, {}},
    {CALLS(setCurrentURL), Null, Bridge, {}},
    {FILLS(setCurrentStateCallbackFunction), Slots{CurrentState}, Null, Bridge, {COUNT(1), ARG(0, IsFunction)}},
    {CALLS(getBundlePath), EmptyText, Foundation, {}},
    {CALLS(getPreferredLanguages), EmptyText, Foundation, {}},
    {CALLS(getPasswordForAccount), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(setPasswordForAccount), Undefined, Foundation, {CONDITION(args.Length() == 2 || args.Length() == 3)}},
    {CALLS(removePasswordForAccount), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(removeAllPasswords), Undefined, Foundation, {}},
    {CALLS(deliverUserNotification), Undefined, Foundation,
     {COUNT(10), ARG(0, IsString), ANY_STRING(1), ANY_STRING(2), ANY_STRING(3), ANY_STRING(4), ANY_STRING(6),
      ANY_STRING(8)}},
    {CALLS(removeUserNotifications), Undefined, Foundation, {}},
    {CALLS(removeUserNotification), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {FILLS(setNotificationCallbackFunction), Slots{NotificationActivation}, Undefined, Bridge, {}},
    {CALLS(getSoundNames), EmptyArray, Foundation, {}},
    {CALLS(playSoundWithName), False, Foundation, {}},
    {CALLS(addToolbarToWindow), Undefined, WindowServer,
     {COUNT(3), ARG(0, IsObject), ARG(1, IsInt32), ARG(2, IsString)}},
    {FILLS(setToolbarCallbackFunctions), Slots{ToolbarValidation, ToolbarAction, ToolbarAddTab}, Undefined, Bridge, {COUNT(3)}},
    {CALLS(reenableWindowUpdates), Undefined, WindowServer, {}},
    {FILLS(setWindowNotificationCallbackFunction), Slots{WindowNotification}, Undefined, Bridge, {}},
    {CALLS(hasMainWindow), False, WindowServer, {COUNT(0)}},
    {CALLS(hasKeyWindow), False, WindowServer, {COUNT(0)}},
    {CALLS(hasSheets), False, WindowServer, {COUNT(1), ARG(0, IsObject)}},
    {CALLS(closeMainWindow), Undefined, WindowServer, {COUNT(0)}},
    {CALLS(closeKeyWindow), Undefined, WindowServer, {COUNT(0)}},
    {CALLS(hideWindowContent), Undefined, WindowServer, {COUNT(2), ARG(0, IsObject), ARG(1, IsInt32)}},
    {CALLS(validateToolbarItems), Undefined, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(selectToolbarItem), Undefined, WindowServer, {COUNT(2), ARG(0, IsInt32), ARG(1, IsString)}},
    {CALLS(toggleToolbarVisibility), Undefined, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(isToolbarVisible), False, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(customizeToolbar), Undefined, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(changeImageOfToolbarItem), Undefined, WindowServer,
     {COUNT(3), ARG(0, IsInt32), ARG(1, IsString), ARG(2, IsString)}},
    {CALLS(showAddTabButton), Undefined, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(hideAddTabButton), Undefined, WindowServer, {COUNT(1), ARG(0, IsInt32)}},
    {CALLS(updateMainMenuMenuItem), Zero, WindowServer, {COUNT(2), ARG(0, IsString), ARG(1, IsString)}},
    {CALLS(updateMainMenuMenuItemWithCommandId), Zero, WindowServer,
     {COUNT(2), ARG(0, IsInt32), ARG(1, IsString)}},
    {CALLS(isWebImagePath), Zero, Foundation, {ARG(0, IsString)}},
    {CALLS(scaleImage), Null, Foundation,
     {ARG(0, IsString), ARG(1, IsString), ARG(2, IsInt32), ARG(3, IsInt32)}},
    {CALLS(saveGeneralPasteboard), False, Foundation, {}},
    {CALLS(restoreGeneralPasteboard), False, Foundation, {}},
    {CALLS(writeFileContentsToGeneralPasteboard), False, Foundation, {ARG(0, IsString)}},
    {CALLS(getValueOfPasteboardType), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(doesPasteboardContainImage), Zero, Foundation, {COUNT(0)}},
    {CALLS(dropFiles), False, WindowServer, {COUNT(3), ARG(0, IsObject), ARG(1, IsString), ARG(2, IsString)}},
    {FILLS(setDragAndDropCallbackFunction), Slots{DragAndDrop}, Undefined, Bridge, {}},
    {FILLS(setKeyboardModifierKeysCallbackFunction), Slots{KeyboardModifierKeys}, Undefined, Bridge, {}},
    {CALLS(openSupportAndFeedbackWindow), Undefined, WindowServer,
     {COUNT(5), ARG(0, IsString), ARG(1, IsString), ARG_OR_NULL(2, IsString), ARG_OR_NULL(3, IsString),
      ARG_OR_NULL(4, IsString)}},
    {CALLS(attachFilesToSupportAndFeedbackWindow), Undefined, WindowServer, {COUNT(1), ARG(0, IsString)}},
    {CALLS(annotateImage), Undefined, Foundation, {COUNT(2), ARG(0, IsString)}},
    {CALLS(imageFromPasteboard), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(takeScreenRecording), Undefined, Foundation, {COUNT(2), ARG(0, IsString)}},
    {CALLS(setupCrashReporter), Undefined, Foundation, {COUNT(0)}},
    {CALLS(testCrash), Undefined, Foundation, {}},
    {CALLS(checkForUpdates), Undefined, Foundation, {COUNT(2), ARG(0, IsBoolean), ARG(1, IsBoolean)}},
    {CALLS(setAppcastParameterCallback), Undefined, Foundation, {COUNT(1), ARG(0, IsFunction)}},
    {CALLS(fetchAppcast), Undefined, Foundation, {COUNT(0)}},
    {FILLS(setQueryWindowTraitCallbackFunction), Slots{QueryWindowTrait}, Undefined, Bridge, {COUNT(1)}},
    // The host's names for the find string; their handlers are crossed on purpose.
    {"getFindStringFromPasteboard", "getFindTextFromPasteboard", getFindTextFromPasteboard, Null, Foundation, {}},
    {"setFindStringToPasteboard", "getFindStringFromPasteboard", getFindStringFromPasteboard, Undefined, Foundation, {COUNT(1)}},
    {CALLS(applicationsForFileExtension), Null, Foundation, {COUNT(3)}},
    {CALLS(applicationsForScheme), Undefined, Foundation, {COUNT(3)}},
    {CALLS(bundleId), Null, Foundation, {COUNT(0)}},
    {CALLS(defaultApplicationForScheme), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(setDefaultApplicationForScheme), Zero, Foundation, {COUNT(2), ARG(0, IsString), ARG(1, IsString)}},
    {CALLS(iconForFileExtension), Undefined, Foundation,
     {COUNT(3), ARG(0, IsString), ARG(1, IsInt32), ARG(2, IsString)}},
    {CALLS(openFile), Zero, Foundation, {COUNT(3)}},
    {CALLS(openInfoForFile), Undefined, Foundation, {COUNT(1)}},
    {CALLS(quickLook), Undefined, Foundation,
     {COUNT(4), ARG(0, IsObject), ARG(1, IsString), ARG(2, IsInt32), ARG(3, IsFunction)}},
    {CALLS(shareFiles), Undefined, WindowServer,
     {COUNT(3), ARG(0, IsObject), ARG(1, IsString), ARG(2, IsString)}},
    {CALLS(generatePreview), Undefined, Foundation,
     {COUNT(4), ARG(0, IsString), ARG(1, IsInt32), ARG(2, IsString), ARG(3, IsFunction)}},
    {CALLS(isApplicationInstalled), False, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(iconForApplication), Undefined, Foundation,
     {COUNT(3), ARG(0, IsString), ARG(1, IsInt32), ARG(2, IsString)}},
    {CALLS(applicationName), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(importIntoApplication), Undefined, Foundation, {COUNT(2), ARG(0, IsString), ARG(1, IsString)}},
    {CALLS(printPath), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(clipPage), Undefined, Foundation, {COUNT(2), ARG(0, IsString), ARG(1, IsObject)}},
    {CALLS(installedClipperApps), Null, Foundation, {COUNT(0)}},
    {FILLS(setSearchServiceCallbackFunction), Slots{SearchService}, Undefined, Bridge, {COUNT(1), ARG(0, IsFunction)}},
    {FILLS(setComposeOutgoingMessageCallbackFunction), Slots{ComposeOutgoingMessage}, Undefined, Bridge, {COUNT(1), ARG(0, IsFunction)}},
    {FILLS(setNetworkReachabilityCallbackFunction), Slots{Reachability}, Undefined, Bridge, {COUNT(1), ARG(0, IsFunction)}},
    {CALLS(isNetworkReachable), False, Foundation, {COUNT(0)}},
    {CALLS(setUserDefault), Undefined, Foundation, {COUNT(2), ARG(0, IsString)}},
    {CALLS(getUserDefault), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(removeUserDefault), Undefined, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(synchronizeUserDefaults), Undefined, Foundation, {COUNT(0)}},
    {CALLS(getStartAtLogin), False, Foundation, {COUNT(0)}},
    {CALLS(migrateStartAtLogin), Undefined, Foundation, {COUNT(0)}},
    {CALLS(setStartAtLogin), False, Foundation, {COUNT(1), ARG(0, IsBoolean)}},
    {CALLS(setStatusItemTitle), Undefined, WindowServer,
     {COUNT(2), ARG_OR_NULL(0, IsString), ARG_OR_NULL(1, IsBoolean)}},
    {FILLS(setStatusItemMenuNeedsUpdateCallbackFunction), Slots{StatusItemMenuNeedsUpdate}, Undefined, Bridge, {COUNT(1), ARG(0, IsFunction)}},
    {CALLS(setupMenuWillShowNotification), Undefined, WindowServer, {COUNT(0)}},
    {CALLS(getBuildNumber), Null, Foundation, {COUNT(0)}},
    {CALLS(getReleaseString), EmptyText, Foundation, {COUNT(0)}},
    {CALLS(pickEmailAddresses), Undefined, WindowServer, {COUNT(2), ARG(0, IsObject), ARG(1, IsString)}},
    {CALLS(recipientsForGroupName), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(hasPreviousVersion), False, Foundation, {COUNT(0)}},
    {CALLS(getMigrationInfo), Null, Foundation, {COUNT(1), ANY_STRING(0)}},
    {CALLS(getTextReplacements), Null, Foundation, {}},
    {CALLS(startMonitoringKeyboardShortcuts), Undefined, WindowServer, {COUNT(1), ARG(0, IsString)}},
    {CALLS(stopMonitoringKeyboardShortcuts), Undefined, WindowServer, {COUNT(0)}},
    {CALLS(bindGlobalShortcutWithDefaultsKey), Undefined, WindowServer, {COUNT(1), ARG(0, IsString)}},
    {CALLS(globalShortcutDescriptionForDefaultsKey), Null, Foundation, {COUNT(1), ARG(0, IsString)}},
    {CALLS(modifierKeys), Null, WindowServer, {COUNT(0)}},
    {CALLS(uninstallPDFServices), Undefined, Foundation, {COUNT(0)}},
    {CALLS(showFileDialog), Undefined, Foundation,
     {COUNT(3), ARG(0, IsObject), ARG(1, IsString), ARG(2, IsFunction)}},
    {CALLS(registerAppleEventForTimingApp), Undefined, Foundation, {COUNT(1), ARG(0, IsFunction)}},
    {"createRequest", "TsCreateRequest", TsCreateRequest, Null, Foundation, {CONDITION(args.Length() >= 1), ARG(0, IsString)}},
    {"isAppHidden", "TsIsAppHidden", TsIsAppHidden, False, WindowServer, {}},
    {"writeFile", "TsWriteFile", TsWriteFile, Undefined, Foundation,
     {COUNT(3), ARG(0, IsString), ARG(1, IsObject), ARG(2, IsBoolean)}},
    {"performService", "TsPerformService", HandlePerformService, Undefined, Foundation,
     {COUNT(2), ARG(0, IsString), ARG(1, IsString)}},
    {"resizeWindowContent", "TsResizeWindowContent", TsResizeWindowContent, Undefined, WindowServer,
     {COUNT(3), ARG(0, IsObject), ARG(1, IsInt32), ARG(2, IsInt32)}},
    {CALLS(isDarkMode), False, Bridge, {COUNT(0)}},
    {CALLS(macOSVersion), Undefined, Foundation, {COUNT(0)}},
};
// clang-format on

#undef CALLS
#undef FILLS
#undef COUNT
#undef ARG
#undef ARG_OR_NULL
#undef ANY_STRING

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
