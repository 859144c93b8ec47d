#pragma once

// Cocoa as the shared sources expect it, on every system. For .mm files.

#import <AppKit/AppKit.h>

#ifdef __APPLE__
#import <ScriptingBridge/ScriptingBridge.h>

using TsDraggingItemBlock = void (^)(NSDraggingItem* item, NSInteger index, BOOL* stop);
#else
#include "Platform/Linux/AppKit/NSEvent+Completion.h"
#include "Platform/Linux/AppKit/NSImage+Template.h"
#include "Platform/Linux/AppKit/NSKeyedUnarchiver+Class.h"
#include "Platform/Linux/AppKit/NSMenu+Completion.h"
#include "Platform/Linux/AppKit/NSMenuItem+Completion.h"
#include "Platform/Linux/AppKit/NSPasteboard+Items.h"
#include "Platform/Linux/AppKit/NSToolbar+Completion.h"
#include "Platform/Linux/AppKit/NSWindow+Completion.h"
#include "Platform/Linux/Scripting/NSScriptObjectSpecifier.h"
#include "Platform/Linux/Scripting/SBApplication.h"

// There are no blocks.
using TsDraggingItemBlock = void*;
#endif
