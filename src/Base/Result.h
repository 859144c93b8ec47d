#pragma once

#include <string>
#include <tl/expected.hpp>
#include <utility>

// Why something failed: the code of the interface that refused (its own numbers; 0 where it has none), and a sentence
// for the log.
struct Failure {
  int code = 0;
  std::string message;
};

// A value, or a failure. The one shape for functions that can fail; `bool` is for questions.
template <typename T>
using Result = tl::expected<T, Failure>;

[[nodiscard]] inline tl::unexpected<Failure> Fail(int code, std::string message) {
  return tl::unexpected<Failure>({code, std::move(message)});
}

[[nodiscard]] inline tl::unexpected<Failure> Fail(std::string message) { return Fail(0, std::move(message)); }
