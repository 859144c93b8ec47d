#include "Base/TsLog.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"
#include "Window/WindowUtils.h"

// Windows were once kept from redrawing while they were rearranged; scripts still say when that is over.
void reenableWindowUpdates(const ScriptArguments&) {}

void hasMainWindow(const ScriptArguments& args) { args.GetReturnValue().Set([NSApp mainWindow] != nil); }

void hasKeyWindow(const ScriptArguments& args) { args.GetReturnValue().Set([NSApp keyWindow] != nil); }

void hasSheets(const ScriptArguments& args) { args.GetReturnValue().Set([[ToWindow(args[0]) sheets] count] != 0); }

void closeMainWindow(const ScriptArguments&) { [[NSApp mainWindow] close]; }

void closeKeyWindow(const ScriptArguments&) { [[NSApp keyWindow] close]; }

void hideWindowContent(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a view with a window to to hide window content: %@", window);
  TsHideWindowContent(window, ToInteger(args[1]));
}

void TsResizeWindowContent(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to change content size");
  [window ts_resizeContent:NSMakeSize(ToInteger(args[1]), ToInteger(args[2])) animate:YES];
}
