// Read once for each target instead of once for each file: the headers that take the compiler longest. Every source
// still includes what it uses.
#ifdef __OBJC__
#import <AppKit/AppKit.h>
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
