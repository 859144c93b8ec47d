#include "Base/TsAssert.h"

#include <cstdio>
#include <cstdlib>

#include "Base/TsLogging.h"

void TsAbortOnAssertion(const char* file, int line, const char* function, const char* text) {
  TsLogFacility::Shared().Flush();
  std::fprintf(stderr, "TessaroNative: %s:%d: %s: Assertion failed: %s\n", file, line, function, text);
  std::fflush(stderr);
  std::abort();
}
