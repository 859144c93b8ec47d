#pragma once

#include <string_view>

// The name by which the log calls the calling thread: "main" for the thread that said so, the system's name for every
// other. Valid until the thread asks again.
[[nodiscard]] std::string_view CurrentThreadName() noexcept;

// The system names the main thread after the program.
void NameMainThread() noexcept;
