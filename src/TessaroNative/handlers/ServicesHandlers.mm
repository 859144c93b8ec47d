#include "Services/TsServicesProvider.h"
#include "TessaroNative/handlers/Handlers.h"
#include "TessaroNative/handlers/Values.h"

void HandlePerformService(const ScriptArguments& args) {
  TsPerformService(convertToNSString(args[0]), convertToNSString(args[1]));
}
