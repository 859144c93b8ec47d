#pragma once

#include <node.h>

// The script-callable functions, one source file per subsystem. Each converts its arguments, calls the object that
// owns the work, and converts the result; the function table has tested the arguments before.

// Module core
void loadFScript(const v8::FunctionCallbackInfo<v8::Value>& args);
void setCurrentURL(const v8::FunctionCallbackInfo<v8::Value>& args);
void getBundlePath(const v8::FunctionCallbackInfo<v8::Value>& args);
void getPreferredLanguages(const v8::FunctionCallbackInfo<v8::Value>& args);
void isDarkMode(const v8::FunctionCallbackInfo<v8::Value>& args);
void macOSVersion(const v8::FunctionCallbackInfo<v8::Value>& args);

// Status item
void setStatusItemTitle(const v8::FunctionCallbackInfo<v8::Value>& args);

// User notifications and sounds
void deliverUserNotification(const v8::FunctionCallbackInfo<v8::Value>& args);
void removeUserNotifications(const v8::FunctionCallbackInfo<v8::Value>& args);
void removeUserNotification(const v8::FunctionCallbackInfo<v8::Value>& args);
void getSoundNames(const v8::FunctionCallbackInfo<v8::Value>& args);
void playSoundWithName(const v8::FunctionCallbackInfo<v8::Value>& args);

// Passwords
void getPasswordForAccount(const v8::FunctionCallbackInfo<v8::Value>& args);
void setPasswordForAccount(const v8::FunctionCallbackInfo<v8::Value>& args);
void removePasswordForAccount(const v8::FunctionCallbackInfo<v8::Value>& args);
void removeAllPasswords(const v8::FunctionCallbackInfo<v8::Value>& args);

// Settings of the application and of the user
void getUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args);
void setUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args);
void removeUserDefault(const v8::FunctionCallbackInfo<v8::Value>& args);
void synchronizeUserDefaults(const v8::FunctionCallbackInfo<v8::Value>& args);
void getStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>& args);
void setStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>& args);
void migrateStartAtLogin(const v8::FunctionCallbackInfo<v8::Value>& args);
void getTextReplacements(const v8::FunctionCallbackInfo<v8::Value>& args);

// Files, dialogs, sharing, support
void openSupportAndFeedbackWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void attachFilesToSupportAndFeedbackWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void shareFiles(const v8::FunctionCallbackInfo<v8::Value>& args);
void showFileDialog(const v8::FunctionCallbackInfo<v8::Value>& args);
void TsWriteFile(const v8::FunctionCallbackInfo<v8::Value>& args);

// Main menu
void updateMainMenuMenuItem(const v8::FunctionCallbackInfo<v8::Value>& args);
void updateMainMenuMenuItemWithCommandId(const v8::FunctionCallbackInfo<v8::Value>& args);
void setupMenuWillShowNotification(const v8::FunctionCallbackInfo<v8::Value>& args);

// Application
void modifierKeys(const v8::FunctionCallbackInfo<v8::Value>& args);
void TsIsAppHidden(const v8::FunctionCallbackInfo<v8::Value>& args);

// Global shortcuts
void startMonitoringKeyboardShortcuts(const v8::FunctionCallbackInfo<v8::Value>& args);
void stopMonitoringKeyboardShortcuts(const v8::FunctionCallbackInfo<v8::Value>& args);
void bindGlobalShortcutWithDefaultsKey(const v8::FunctionCallbackInfo<v8::Value>& args);
void globalShortcutDescriptionForDefaultsKey(const v8::FunctionCallbackInfo<v8::Value>& args);

// Network, reachability
void TsCreateRequest(const v8::FunctionCallbackInfo<v8::Value>& args);
void isNetworkReachable(const v8::FunctionCallbackInfo<v8::Value>& args);

// Data of the previous version
void hasPreviousVersion(const v8::FunctionCallbackInfo<v8::Value>& args);
void getMigrationInfo(const v8::FunctionCallbackInfo<v8::Value>& args);

// Windows
void reenableWindowUpdates(const v8::FunctionCallbackInfo<v8::Value>& args);
void hasMainWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void hasKeyWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void hasSheets(const v8::FunctionCallbackInfo<v8::Value>& args);
void closeMainWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void closeKeyWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void hideWindowContent(const v8::FunctionCallbackInfo<v8::Value>& args);
void TsResizeWindowContent(const v8::FunctionCallbackInfo<v8::Value>& args);

// Toolbar
void addToolbarToWindow(const v8::FunctionCallbackInfo<v8::Value>& args);
void validateToolbarItems(const v8::FunctionCallbackInfo<v8::Value>& args);
void selectToolbarItem(const v8::FunctionCallbackInfo<v8::Value>& args);
void toggleToolbarVisibility(const v8::FunctionCallbackInfo<v8::Value>& args);
void isToolbarVisible(const v8::FunctionCallbackInfo<v8::Value>& args);
void customizeToolbar(const v8::FunctionCallbackInfo<v8::Value>& args);
void changeImageOfToolbarItem(const v8::FunctionCallbackInfo<v8::Value>& args);
void showAddTabButton(const v8::FunctionCallbackInfo<v8::Value>& args);
void hideAddTabButton(const v8::FunctionCallbackInfo<v8::Value>& args);

// Drag and drop
void dropFiles(const v8::FunctionCallbackInfo<v8::Value>& args);

// Pasteboard
void saveGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);
void restoreGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);
void writeFileContentsToGeneralPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);
void getValueOfPasteboardType(const v8::FunctionCallbackInfo<v8::Value>& args);
void doesPasteboardContainImage(const v8::FunctionCallbackInfo<v8::Value>& args);
void getFindTextFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);
void getFindStringFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);

// Other applications and default handlers
void applicationsForFileExtension(const v8::FunctionCallbackInfo<v8::Value>& args);
void applicationsForScheme(const v8::FunctionCallbackInfo<v8::Value>& args);
void bundleId(const v8::FunctionCallbackInfo<v8::Value>& args);
void defaultApplicationForScheme(const v8::FunctionCallbackInfo<v8::Value>& args);
void setDefaultApplicationForScheme(const v8::FunctionCallbackInfo<v8::Value>& args);
void iconForFileExtension(const v8::FunctionCallbackInfo<v8::Value>& args);
void iconForApplication(const v8::FunctionCallbackInfo<v8::Value>& args);
void openFile(const v8::FunctionCallbackInfo<v8::Value>& args);
void openInfoForFile(const v8::FunctionCallbackInfo<v8::Value>& args);
void isApplicationInstalled(const v8::FunctionCallbackInfo<v8::Value>& args);
void applicationName(const v8::FunctionCallbackInfo<v8::Value>& args);

// Hand-offs to other applications
void importIntoApplication(const v8::FunctionCallbackInfo<v8::Value>& args);
void printPath(const v8::FunctionCallbackInfo<v8::Value>& args);
void clipPage(const v8::FunctionCallbackInfo<v8::Value>& args);
void installedClipperApps(const v8::FunctionCallbackInfo<v8::Value>& args);
void uninstallPDFServices(const v8::FunctionCallbackInfo<v8::Value>& args);
void registerAppleEventForTimingApp(const v8::FunctionCallbackInfo<v8::Value>& args);

// Mail from other applications, contacts
void HandlePerformService(const v8::FunctionCallbackInfo<v8::Value>& args);
void pickEmailAddresses(const v8::FunctionCallbackInfo<v8::Value>& args);
void recipientsForGroupName(const v8::FunctionCallbackInfo<v8::Value>& args);

// Updates and crash events
void checkForUpdates(const v8::FunctionCallbackInfo<v8::Value>& args);
void setAppcastParameterCallback(const v8::FunctionCallbackInfo<v8::Value>& args);
void fetchAppcast(const v8::FunctionCallbackInfo<v8::Value>& args);
void getBuildNumber(const v8::FunctionCallbackInfo<v8::Value>& args);
void getReleaseString(const v8::FunctionCallbackInfo<v8::Value>& args);
void setupCrashReporter(const v8::FunctionCallbackInfo<v8::Value>& args);
void testCrash(const v8::FunctionCallbackInfo<v8::Value>& args);
// Images, previews and recordings
void isWebImagePath(const v8::FunctionCallbackInfo<v8::Value>& args);
void scaleImage(const v8::FunctionCallbackInfo<v8::Value>& args);
void imageFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args);
void generatePreview(const v8::FunctionCallbackInfo<v8::Value>& args);
void quickLook(const v8::FunctionCallbackInfo<v8::Value>& args);
void annotateImage(const v8::FunctionCallbackInfo<v8::Value>& args);
void takeScreenRecording(const v8::FunctionCallbackInfo<v8::Value>& args);
