#include "Platform/ThreadName.h"

#include <sys/prctl.h>

#include <array>

#include "Platform/MainQueue.h"

namespace tessaro::platform {

std::string_view CurrentThreadName() noexcept {
  // There it has the name of the program.
  if (MainQueue::IsMainThread()) return "main";
  thread_local std::array<char, 16> name{};
  prctl(PR_GET_NAME, name.data());
  return name.data();
}

}  // namespace tessaro::platform
