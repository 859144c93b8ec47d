#include "Base/ThreadName.h"

#include <pthread.h>

#include <array>

namespace {

thread_local bool isMain = false;

}  // namespace

void NameMainThread() noexcept { isMain = true; }

std::string_view CurrentThreadName() noexcept {
  if (isMain) return "main";
  thread_local std::array<char, 64> name{};
  if (pthread_getname_np(pthread_self(), name.data(), name.size()) != 0) return "";
  return name.data();
}
