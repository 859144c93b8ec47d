#pragma once

#include <stddef.h>
extern "C" int sysctlbyname(const char* name, void* old, size_t* oldLength, void* value, size_t length);
