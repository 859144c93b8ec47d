#pragma once

namespace v8 {
template <class T>
class Local;
class Value;
}  // namespace v8

// Each replaces what its slot holds, and so releases the earlier function. An empty handle empties the slot.

void SetCurrentStateCallbackFunction(v8::Local<v8::Value> function);
void SetComposeOutgoingMessageCallback(v8::Local<v8::Value> function);
void SetSearchServiceCallback(v8::Local<v8::Value> function);
void SetNetworkReachabilityCallback(v8::Local<v8::Value> function);
void SetWindowNotificationCallback(v8::Local<v8::Value> function);
void SetQueryWindowTraitCallback(v8::Local<v8::Value> function);
void SetDragAndDropCallback(v8::Local<v8::Value> function);
void SetKeyboardModifierKeysCallback(v8::Local<v8::Value> function);
void SetNotificationActivationCallback(v8::Local<v8::Value> function);
void SetStatusItemMenuNeedsUpdateCallback(v8::Local<v8::Value> function);
void SetAppcastParameterCallback(v8::Local<v8::Value> function);
void SetToolbarCallbacks(v8::Local<v8::Value> validation, v8::Local<v8::Value> action, v8::Local<v8::Value> addTab);
