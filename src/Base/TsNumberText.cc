#include "Base/TsNumberText.h"

#include <array>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::string_view kPoint = ".";

// The decimal separator that the C library reads and writes in the process's locale.
std::string LocalPoint() { return std::localeconv()->decimal_point; }

void Replace(std::string& text, std::string_view from, std::string_view to) {
  const std::size_t place = text.find(from);
  if (place != text.npos) text.replace(place, from.size(), to);
}

}  // namespace

std::string TsNumberText(double value) {
  constexpr int kFewestDigits = 15;
  constexpr int kMostDigits = 17;
  std::array<char, 32> digits;
  for (int count = kFewestDigits; count <= kMostDigits; ++count) {
    std::snprintf(digits.data(), digits.size(), "%.*g", count, value);
    if (std::strtod(digits.data(), nullptr) == value) break;
  }
  std::string text = digits.data();
  Replace(text, LocalPoint(), kPoint);
  return text;
}

std::optional<double> TsNumberInText(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != text.npos) return std::nullopt;
  std::string local(text);
  Replace(local, kPoint, LocalPoint());
  char* end = nullptr;
  const double value = std::strtod(local.c_str(), &end);
  if (end != local.c_str() + local.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}
