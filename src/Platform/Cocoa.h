#pragma once

// Cocoa as the shared sources expect it, on every system. For .mm files.

#import <AppKit/AppKit.h>

#ifdef GNUSTEP
#include "Platform/Linux/Cocoa/NSEvent+LocalMonitor.h"
#include "Platform/Linux/Cocoa/NSKeyedUnarchiver+Class.h"
#include "Platform/Linux/Cocoa/NSMenuItem+Hidden.h"
#include "Platform/Linux/Cocoa/NSPasteboard+Items.h"

#include "Platform/Linux/Cocoa/NSImage+Template.h"
#include "Platform/Linux/Cocoa/NSMenu+Items.h"
#include "Platform/Linux/Cocoa/NSMenu+PopUp.h"
#include "Platform/Linux/Cocoa/NSToolbar+Extensions.h"
#include "Platform/Linux/Cocoa/NSWindow+Sheets.h"

#include "Platform/Linux/Cocoa/NSScriptObjectSpecifier.h"
#include "Platform/Linux/Cocoa/NSWindow+Tabbing.h"
#include "Platform/Linux/Cocoa/NSWindow+TitlebarAccessories.h"

#include "Platform/Linux/Cocoa/SBApplication.h"
#endif
