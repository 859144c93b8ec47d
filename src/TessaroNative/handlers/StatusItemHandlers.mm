#import "StatusItem/TsStatusItemController.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

void setStatusItemTitle(const ScriptArguments& args) {
  TsStatusItemController* controller = [TsStatusItemController sharedInstance];
  [controller setHasErrors:args[1]->IsTrue()];
  [controller setTitle:args[0]->IsString() ? convertToNSString(args[0]) : nil];
}
