#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsCallbackSetters.h"

void setCurrentStateCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetCurrentStateCallbackFunction(args[0]);
  args.GetReturnValue().SetNull();
}

void setNotificationCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetNotificationActivationCallback(args[0]);
}

void setToolbarCallbackFunctions(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetToolbarCallbacks(args[0], args[1], args[2]);
}

void setWindowNotificationCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetWindowNotificationCallback(args[0]);
}

void setDragAndDropCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetDragAndDropCallback(args[0]);
}

void setKeyboardModifierKeysCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetKeyboardModifierKeysCallback(args[0]);
}

void setQueryWindowTraitCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetQueryWindowTraitCallback(args[0]);
}

void setSearchServiceCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetSearchServiceCallback(args[0]);
}

void setComposeOutgoingMessageCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetComposeOutgoingMessageCallback(args[0]);
}

void setNetworkReachabilityCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetNetworkReachabilityCallback(args[0]);
}

void setStatusItemMenuNeedsUpdateCallbackFunction(const v8::FunctionCallbackInfo<v8::Value>& args) {
  SetStatusItemMenuNeedsUpdateCallback(args[0]);
}
