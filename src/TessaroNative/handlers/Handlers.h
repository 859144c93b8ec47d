#pragma once

#include <v8.h>

// The script-callable functions, one source file per subsystem. Each converts its arguments, calls the object that
// owns the work, and converts the result; the function table has tested the arguments before.

// A call from script: its arguments, and the place for its result.
using ScriptArguments = v8::FunctionCallbackInfo<v8::Value>;

using ScriptHandler = void(const ScriptArguments& args);

// The application and its surroundings
ScriptHandler loadFScript, setCurrentURL, getBundlePath, getPreferredLanguages, isDarkMode, macOSVersion, modifierKeys,
    TsIsAppHidden, showFileDialog, TsWriteFile;

// Main menu and status item
ScriptHandler updateMainMenuMenuItem, updateMainMenuMenuItemWithCommandId, setupMenuWillShowNotification,
    setStatusItemTitle;

// Windows, their toolbars, drops on them
ScriptHandler reenableWindowUpdates, hasMainWindow, hasKeyWindow, hasSheets, closeMainWindow, closeKeyWindow,
    hideWindowContent, TsResizeWindowContent, addToolbarToWindow, validateToolbarItems, selectToolbarItem,
    toggleToolbarVisibility, isToolbarVisible, customizeToolbar, changeImageOfToolbarItem, showAddTabButton,
    hideAddTabButton, dropFiles;

// Support
ScriptHandler openSupportAndFeedbackWindow, attachFilesToSupportAndFeedbackWindow;

// User notifications and sounds
ScriptHandler deliverUserNotification, removeUserNotifications, removeUserNotification, getSoundNames,
    playSoundWithName;

// Passwords, accounts of the previous version
ScriptHandler getPasswordForAccount, setPasswordForAccount, removePasswordForAccount, removeAllPasswords,
    hasPreviousVersion, getMigrationInfo;

// Settings of the application and of the user
ScriptHandler getUserDefault, setUserDefault, removeUserDefault, synchronizeUserDefaults, getStartAtLogin,
    setStartAtLogin, migrateStartAtLogin, getTextReplacements;

// Global shortcuts
ScriptHandler startMonitoringKeyboardShortcuts, stopMonitoringKeyboardShortcuts, bindGlobalShortcutWithDefaultsKey,
    globalShortcutDescriptionForDefaultsKey;

// Network, reachability
ScriptHandler TsCreateRequest, isNetworkReachable;

// Pasteboard
ScriptHandler saveGeneralPasteboard, restoreGeneralPasteboard, writeFileContentsToGeneralPasteboard,
    getValueOfPasteboardType, doesPasteboardContainImage, getFindTextFromPasteboard, getFindStringFromPasteboard;

// Other applications and default handlers
ScriptHandler applicationsForFileExtension, applicationsForScheme, bundleId, defaultApplicationForScheme,
    setDefaultApplicationForScheme, iconForFileExtension, iconForApplication, openFile, openInfoForFile,
    isApplicationInstalled, applicationName;

// Hand-offs to other applications
ScriptHandler importIntoApplication, printPath, clipPage, installedClipperApps, uninstallPDFServices,
    registerAppleEventForTimingApp, HandlePerformService, shareFiles;

// Contacts
ScriptHandler pickEmailAddresses, recipientsForGroupName;

// Updates and crash events
ScriptHandler checkForUpdates, setAppcastParameterCallback, fetchAppcast, getBuildNumber, getReleaseString,
    setupCrashReporter, testCrash;

// Images, previews and recordings
ScriptHandler isWebImagePath, scaleImage, imageFromPasteboard, generatePreview, quickLook, annotateImage,
    takeScreenRecording;
