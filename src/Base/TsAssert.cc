#include "Base/TsAssert.h"

#include <cstdio>
#include <cstdlib>

#include "Base/TsLogging.h"

void TsAbort(const char* file, int line, const char* function, const char* text) {
  TsLogFacility::Shared().Flush();
  std::fprintf(stderr, "TessaroNative: %s:%d: %s: %s\n", file, line, function, text);
  std::fflush(stderr);
  std::abort();
}
