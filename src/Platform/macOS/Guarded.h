#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <string>

// For bodies that call Cocoa: no exception of its may leave a contract's function.
namespace tessaro::platform {

// Runs `work` with an autorelease pool. Gives the reason when an Objective-C exception ended it, else an empty text.
[[nodiscard]] std::string Guarded(const std::function<void()>& work) noexcept;

// "domain code: description", for the log.
[[nodiscard]] std::string ReasonOf(NSError* error);

}  // namespace tessaro::platform
