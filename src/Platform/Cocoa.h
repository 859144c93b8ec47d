#pragma once

// Cocoa as the shared sources expect it, on every system. For .mm files.

#import <AppKit/AppKit.h>

#ifdef __APPLE__
#import <ScriptingBridge/ScriptingBridge.h>

using TsDraggingItemBlock = void (^)(NSDraggingItem* item, NSInteger index, BOOL* stop);
#else
#include "Platform/Linux/AppKit/CocoaAdditions.h"
#include "Platform/Linux/Scripting/NSScriptObjectSpecifier.h"
#include "Platform/Linux/Scripting/SBApplication.h"

// There are no blocks.
using TsDraggingItemBlock = void*;
#endif
