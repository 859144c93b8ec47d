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

// Callback slots
void setCurrentStateCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setNotificationCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setToolbarCallbackFunctions(const v8::FunctionCallbackInfo<v8::Value>& args);
void setWindowNotificationCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setDragAndDropCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setKeyboardModifierKeysCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setAppcastParameterCallback(const v8::FunctionCallbackInfo<v8::Value>& args);
void setQueryWindowTraitCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setSearchServiceCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setComposeOutgoingMessageCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setNetworkReachabilityCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);
void setStatusItemMenuNeedsUpdateCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args);

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

// Main menu
void updateMainMenuMenuItem(const v8::FunctionCallbackInfo<v8::Value>& args);
void updateMainMenuMenuItemWithCommandId(const v8::FunctionCallbackInfo<v8::Value>& args);
void setupMenuWillShowNotification(const v8::FunctionCallbackInfo<v8::Value>& args);

// Application
void modifierKeys(const v8::FunctionCallbackInfo<v8::Value>& args);
void TsIsAppHidden(const v8::FunctionCallbackInfo<v8::Value>& args);

// Network, reachability
void TsCreateRequest(const v8::FunctionCallbackInfo<v8::Value>& args);
void isNetworkReachable(const v8::FunctionCallbackInfo<v8::Value>& args);

// Mail from other applications, contacts
void TsPerformService(const v8::FunctionCallbackInfo<v8::Value>& args);
void pickEmailAddresses(const v8::FunctionCallbackInfo<v8::Value>& args);
void recipientsForGroupName(const v8::FunctionCallbackInfo<v8::Value>& args);
