#pragma once

#include <string>
#include <string_view>

namespace tessaro::platform {

// The operating system's version as its users know it: "10.14.6", "12" for Debian 12. Empty if unknown.
[[nodiscard]] std::string Version();

// False on every other system.
[[nodiscard]] bool IsAtLeastMacOS(int major, int minor);

struct KernelVariable {
  int value = 0;
  int error = 0;  // an errno value; 0 when `value` was read, ENOENT when the kernel has no such variable
};

// Reads an integer variable of the kernel of macOS by its dotted name; no other kernel has one.
[[nodiscard]] KernelVariable ReadKernelVariable(std::string_view name);

}  // namespace tessaro::platform
