#import "StatusItem/TsStatusItemController.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsScriptValues.h"

void setStatusItemTitle(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsStatusItemController* controller = [TsStatusItemController sharedInstance];
  [controller setHasErrors:args[1]->IsTrue()];
  [controller setTitle:args[0]->IsString() ? convertToNSString(args[0]) : nil];
}
