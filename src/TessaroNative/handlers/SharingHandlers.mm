#include "Base/TsLog.h"
#include "Sharing/TsSharing.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

void shareFiles(const ScriptArguments& args) {
  NSWindow* window = ToWindow(args[0]);
  if (window == nil) return TsLogError(@"Need a window to share files from");
  NSArray* paths = FromJSON<NSArray>(args[1], @"paths");
  NSDictionary* place = FromJSON<NSDictionary>(args[2], @"rectangle");
  if (paths == nil || place == nil) return;
  TsShareFiles(window, paths, place);
}
