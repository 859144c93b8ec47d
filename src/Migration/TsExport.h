#pragma once

#import <Foundation/Foundation.h>

#include <initializer_list>
#include <utility>

// The dictionary in which an object leaves its store, autoreleased. A missing value becomes null.
[[nodiscard]] NSDictionary* TsExported(std::initializer_list<std::pair<NSString*, id>> values);
