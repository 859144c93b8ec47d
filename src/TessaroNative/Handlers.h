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

// Network, reachability
void TsCreateRequest(const v8::FunctionCallbackInfo<v8::Value>& args);
void isNetworkReachable(const v8::FunctionCallbackInfo<v8::Value>& args);
