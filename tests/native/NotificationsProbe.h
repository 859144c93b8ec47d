#pragma once

#include <node.h>

// The alerts of the notification centre, the notifications posted about them, and sounds.
void AttachNotificationsProbe(v8::Local<v8::Object> exports);

// A notification server in this process.
void AttachNotificationServerProbe(v8::Local<v8::Object> exports);
