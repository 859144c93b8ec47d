#pragma once

// Cocoa as the shared sources expect it, on every system. For .mm files.

#import <AppKit/AppKit.h>

#ifdef __APPLE__
#import <ScriptingBridge/ScriptingBridge.h>

using TsDraggingItemBlock = void (^)(NSDraggingItem* item, NSInteger index, BOOL* stop);
#else
#include "Platform/Linux/AppKit/NSEvent+LocalMonitor.h"
#include "Platform/Linux/AppKit/NSKeyedUnarchiver+Class.h"
#include "Platform/Linux/AppKit/NSMenuItem+Hidden.h"
#include "Platform/Linux/AppKit/NSPasteboard+Items.h"

#include "Platform/Linux/AppKit/NSImage+Template.h"
#include "Platform/Linux/AppKit/NSMenu+Items.h"
#include "Platform/Linux/AppKit/NSMenu+PopUp.h"
#include "Platform/Linux/AppKit/NSToolbar+Extensions.h"
#include "Platform/Linux/AppKit/NSWindow+Sheets.h"

#include "Platform/Linux/AppKit/NSWindow+Tabbing.h"
#include "Platform/Linux/AppKit/NSWindow+TitlebarAccessories.h"
#include "Platform/Linux/Scripting/NSScriptObjectSpecifier.h"

#include "Platform/Linux/Scripting/SBApplication.h"

// There are no blocks.
using TsDraggingItemBlock = void*;
#endif
