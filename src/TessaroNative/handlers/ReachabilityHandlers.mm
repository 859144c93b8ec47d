#include "Reachability/TsReachability.h"
#include "TessaroNative/handlers/Handlers.h"

void isNetworkReachable(const ScriptArguments& args) { args.GetReturnValue().Set(TsIsNetworkReachable()); }
