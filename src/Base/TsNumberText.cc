#include "Base/TsNumberText.h"

#include <locale.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

// The calling thread uses the C locale for as long as this object lives.
class CLocale {
 public:
  CLocale() : previous_(uselocale(Shared())) {}
  ~CLocale() { uselocale(previous_); }
  CLocale(const CLocale&) = delete;
  CLocale& operator=(const CLocale&) = delete;

 private:
  static locale_t Shared() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
  }

  locale_t previous_;
};

}  // namespace

std::string TsNumberText(double value) {
  constexpr int kFewestDigits = 15;
  constexpr int kMostDigits = 17;
  const CLocale locale;
  std::array<char, 32> text;
  for (int digits = kFewestDigits; digits <= kMostDigits; ++digits) {
    std::snprintf(text.data(), text.size(), "%.*g", digits, value);
    if (std::strtod(text.data(), nullptr) == value) break;
  }
  return text.data();
}

std::optional<double> TsNumberInText(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != text.npos) return std::nullopt;
  const CLocale locale;
  const std::string terminated(text);
  char* end = nullptr;
  const double value = std::strtod(terminated.c_str(), &end);
  if (end != terminated.c_str() + terminated.size() || !std::isfinite(value)) return std::nullopt;
  return value;
}
