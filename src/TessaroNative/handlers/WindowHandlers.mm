#include "Base/TsLog.h"
#import "Extensions/NSWindow+TsResize.h"
#include "Platform/Cocoa.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/WindowArgument.h"
#include "Window/WindowUtils.h"

// Windows were once kept from redrawing while they were rearranged; scripts still say when that is over.
void reenableWindowUpdates(const v8::FunctionCallbackInfo<v8::Value>&) {}

void hasMainWindow(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set([NSApp mainWindow] != nil);
}

void hasKeyWindow(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set([NSApp keyWindow] != nil);
}

void hasSheets(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set([[ToWindow(args[0]) sheets] count] != 0);
}

void closeMainWindow(const v8::FunctionCallbackInfo<v8::Value>&) { [[NSApp mainWindow] close]; }

void closeKeyWindow(const v8::FunctionCallbackInfo<v8::Value>&) { [[NSApp keyWindow] close]; }

void hideWindowContent(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) {
    TsLogError(@"Need a view with a window to to hide window content: %@", window);
    return;
  }
  TsHideWindowContent(window, args[1].As<v8::Int32>()->Value());
}

void TsResizeWindowContent(const v8::FunctionCallbackInfo<v8::Value>& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) {
    TsLogError(@"Need a window to change content size");
    return;
  }
  const int width = args[1].As<v8::Int32>()->Value();
  const int height = args[2].As<v8::Int32>()->Value();
  [window ts_resizeContent:NSMakeSize(width, height) animate:YES];
}
