#include "Capture/TsImageAnnotator.h"
#include "Capture/TsScreenRecorder.h"
#import "Extensions/NSString+TsPath.h"
#include "Images/TsImages.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

namespace {

NSArray* TextsIn(NSArray* values) {
  NSMutableArray* texts = [NSMutableArray array];
  for (id value in values) {
    if (As<NSString>(value) != nil) [texts addObject:value];
  }
  return texts;
}

}  // namespace

void isWebImagePath(const ScriptArguments& args) {
  args.GetReturnValue().Set([convertToNSString(args[0]) ts_isWebImagePath] ? 1 : 0);
}

void scaleImage(const ScriptArguments& args) {
  ReturnStringOrNull(args, TsScaleImage(convertToNSString(args[0]), convertToNSString(args[1]), ToInteger(args[2]),
                                        ToInteger(args[3])));
}

void imageFromPasteboard(const ScriptArguments& args) {
  ReturnStringOrNull(args, TsImageFromPasteboard([NSPasteboard generalPasteboard], convertToNSString(args[0])));
}

void generatePreview(const ScriptArguments& args) {
  TsGeneratePreview(convertToNSString(args[0]), ToInteger(args[1]), convertToNSString(args[2]),
                    TsPendingCallback(args[3]));
}

void quickLook(const ScriptArguments& args) {
  NSArray* paths = TextsIn(FromJSON<NSArray>(args[1], @"paths JSON"));
  TsQuickLook(ToWindow(args[0]), paths, ToInteger(args[2]), TsPendingCallback(args[3]));
}

void annotateImage(const ScriptArguments& args) {
  TsAnnotateImage(convertToNSString(args[0]), TsPendingCallback(args[1]));
}

void takeScreenRecording(const ScriptArguments& args) {
  TsTakeScreenRecording(convertToNSString(args[0]), TsPendingCallback(args[1]));
}
