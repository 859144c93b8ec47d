#pragma once

#import <objc/objc.h>
#include <v8.h>

@class NSWindow;

// The window that a handle from script means; nil where the value is no handle, and when the window is gone.
[[nodiscard]] NSWindow* ToWindow(v8::Local<v8::Value> value);
