// Read once for each target instead of once for each file: the headers that take the compiler longest. Every source
// still includes what it uses.
#ifdef __OBJC__
// For GNUstep's run time, clang puts every protocol of every header into every object, a quarter of the module. Neither
// we nor GNUstep ask an object of ours for one of them.
#ifdef GNUSTEP
#pragma clang attribute push(__attribute__((objc_non_runtime_protocol)), apply_to = objc_protocol)
#endif
#import <AppKit/AppKit.h>
#ifdef GNUSTEP
#pragma clang attribute pop
#endif
#endif

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>
