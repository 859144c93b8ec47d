#pragma once

// Ends the process with `text` where `condition` doesn't hold: whoever has called has broken a contract that nothing
// sensible could follow from.
#define TsAssert(condition, text) \
  ((condition) ? static_cast<void>(0) : TsAbort(__FILE__, __LINE__, __func__, "Assertion failed: " text))

[[noreturn]] void TsAbort(const char* file, int line, const char* function, const char* text);
