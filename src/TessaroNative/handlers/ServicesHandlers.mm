#include "Services/TsServicesProvider.h"
#include "TessaroNative/handlers/Handlers.h"
#include "Utilities/TsScriptValues.h"

void HandlePerformService(const v8::FunctionCallbackInfo<v8::Value>& args) {
  TsPerformService(convertToNSString(args[0]), convertToNSString(args[1]));
}
