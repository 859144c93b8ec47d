#include "Base/TsLog.h"
#include "Capture/TsImageAnnotator.h"
#include "Capture/TsScreenRecorder.h"
#import "Extensions/NSString+TsPath.h"
#include "Images/TsImages.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/ReturnValues.h"
#include "TessaroNative/handlers/WindowArgument.h"
#include "Utilities/TsJSON.h"

namespace {

std::int32_t Integer(const v8::FunctionCallbackInfo<v8::Value>& args, int index) {
  return args[index].As<v8::Int32>()->Value();
}

void ReturnPath(const v8::FunctionCallbackInfo<v8::Value>& args, NSString* path) {
  args.GetReturnValue().SetNull();
  ReturnString(args, path);
}

// The texts of a JSON array. Empty, and a line in the log, for anything else.
NSArray* TextsOf(NSString* json) {
  NSError* error = nil;
  id values = TsConvertFromJSONString(json, &error);
  if (![values isKindOfClass:[NSArray class]]) {
    TsLogError(@"Couldn't parse paths JSON %@ because of %@", json, error);
    return @[];
  }
  NSMutableArray* texts = [NSMutableArray array];
  for (id value in values) {
    if ([value isKindOfClass:[NSString class]]) [texts addObject:value];
  }
  return texts;
}

}  // namespace

void isWebImagePath(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set([convertToNSString(args[0]) ts_isWebImagePath] ? 1 : 0);
}

void scaleImage(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnPath(args,
             TsScaleImage(convertToNSString(args[0]), convertToNSString(args[1]), Integer(args, 2), Integer(args, 3)));
}

void imageFromPasteboard(const v8::FunctionCallbackInfo<v8::Value>& args) {
  ReturnPath(args, TsImageFromPasteboard([NSPasteboard generalPasteboard], convertToNSString(args[0])));
}

void generatePreview(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsGeneratePreview(convertToNSString(args[0]), Integer(args, 1), convertToNSString(args[2]),
                    TsPendingCallback(args[3]));
}

void quickLook(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsQuickLook(ToWindow(args[0]), TextsOf(convertToNSString(args[1])), Integer(args, 2), TsPendingCallback(args[3]));
}

void annotateImage(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsAnnotateImage(convertToNSString(args[0]), TsPendingCallback(args[1]));
}

void takeScreenRecording(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsTakeScreenRecording(convertToNSString(args[0]), TsPendingCallback(args[1]));
}
