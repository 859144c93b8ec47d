#pragma once

#define API_AVAILABLE(platform) __attribute__((availability(CHECK_INTRODUCED_##platform)))
#define API_DEPRECATED(message, platform) __attribute__((availability(CHECK_DEPRECATED_##platform)))
#define CHECK_INTRODUCED_macos(version) macos, introduced = version
#define CHECK_DEPRECATED_macos(first, last) macos, introduced = first, deprecated = last
