#pragma once

#include <v8.h>

// The script-callable functions, one source file per subsystem. Each converts its arguments, calls the object that
// owns the work, and converts the result; the function table has tested the arguments before.

// A call from script: its arguments, and the place for its result.
using ScriptArguments = v8::FunctionCallbackInfo<v8::Value>;

using ScriptHandler = void(const ScriptArguments& args);

// Module core
ScriptHandler loadFScript, setCurrentURL, getBundlePath, getPreferredLanguages, isDarkMode, macOSVersion;

// Status item
ScriptHandler setStatusItemTitle;

// User notifications and sounds
ScriptHandler deliverUserNotification, removeUserNotifications, removeUserNotification, getSoundNames,
    playSoundWithName;

// Passwords
ScriptHandler getPasswordForAccount, setPasswordForAccount, removePasswordForAccount, removeAllPasswords;

// Settings of the application and of the user
ScriptHandler getUserDefault, setUserDefault, removeUserDefault, synchronizeUserDefaults, getStartAtLogin,
    setStartAtLogin, migrateStartAtLogin, getTextReplacements;

// Files, dialogs, sharing, support
ScriptHandler openSupportAndFeedbackWindow, attachFilesToSupportAndFeedbackWindow, shareFiles, showFileDialog,
    TsWriteFile;

// Main menu
ScriptHandler updateMainMenuMenuItem, updateMainMenuMenuItemWithCommandId, setupMenuWillShowNotification;

// Application
ScriptHandler modifierKeys, TsIsAppHidden;

// Global shortcuts
ScriptHandler startMonitoringKeyboardShortcuts, stopMonitoringKeyboardShortcuts, bindGlobalShortcutWithDefaultsKey,
    globalShortcutDescriptionForDefaultsKey;

// Network, reachability
ScriptHandler TsCreateRequest, isNetworkReachable;

// Data of the previous version
ScriptHandler hasPreviousVersion, getMigrationInfo;

// Windows
ScriptHandler reenableWindowUpdates, hasMainWindow, hasKeyWindow, hasSheets, closeMainWindow, closeKeyWindow,
    hideWindowContent, TsResizeWindowContent;

// Toolbar
ScriptHandler addToolbarToWindow, validateToolbarItems, selectToolbarItem, toggleToolbarVisibility, isToolbarVisible,
    customizeToolbar, changeImageOfToolbarItem, showAddTabButton, hideAddTabButton;

// Drag and drop
ScriptHandler dropFiles;

// Pasteboard
ScriptHandler saveGeneralPasteboard, restoreGeneralPasteboard, writeFileContentsToGeneralPasteboard,
    getValueOfPasteboardType, doesPasteboardContainImage, getFindTextFromPasteboard, getFindStringFromPasteboard;

// Other applications and default handlers
ScriptHandler applicationsForFileExtension, applicationsForScheme, bundleId, defaultApplicationForScheme,
    setDefaultApplicationForScheme, iconForFileExtension, iconForApplication, openFile, openInfoForFile,
    isApplicationInstalled, applicationName;

// Hand-offs to other applications
ScriptHandler importIntoApplication, printPath, clipPage, installedClipperApps, uninstallPDFServices,
    registerAppleEventForTimingApp;

// Mail from other applications, contacts
ScriptHandler HandlePerformService, pickEmailAddresses, recipientsForGroupName;

// Updates and crash events
ScriptHandler checkForUpdates, setAppcastParameterCallback, fetchAppcast, getBuildNumber, getReleaseString,
    setupCrashReporter, testCrash;

// Images, previews and recordings
ScriptHandler isWebImagePath, scaleImage, imageFromPasteboard, generatePreview, quickLook, annotateImage,
    takeScreenRecording;
