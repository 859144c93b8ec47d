#include "Reachability/TsReachability.h"
#include "TessaroNative/handlers/Handlers.h"

void isNetworkReachable(const v8::FunctionCallbackInfo<v8::Value>& args) {
  args.GetReturnValue().Set(TsIsNetworkReachable());
}
