#include "Utilities/TsJSONRepair.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

namespace {

constexpr std::size_t kEscapeLength = 6;  // \uXXXX

bool IsNumberCharacter(char c) {
  return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

template <typename Integer>
bool Fits(std::string_view digits) {
  Integer value;
  return std::from_chars(digits.data(), digits.data() + digits.size(), value).ec == std::errc();
}

bool IsLargeInteger(std::string_view number) {
  return number.find_first_of(".eE+") == std::string_view::npos && !Fits<std::int64_t>(number) &&
         !Fits<std::uint64_t>(number);
}

// The UTF-16 unit of the \u escape that `text` begins with, or -1 when it begins with none.
int EscapedUnit(std::string_view text) {
  if (text.size() < kEscapeLength || text[0] != '\\' || text[1] != 'u') return -1;
  int unit = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + kEscapeLength, unit, 16);
  return error == std::errc() && end == text.data() + kEscapeLength ? unit : -1;
}

bool IsHighSurrogate(int unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool IsLowSurrogate(int unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

class Repair {
 public:
  explicit Repair(std::string_view json) : rest_(json) { repaired_.reserve(json.size() + 64); }

  std::string Run() {
    while (!rest_.empty()) {
      if (rest_.front() == '"') {
        String();
      } else if (IsNumberCharacter(rest_.front())) {
        Number();
      } else {
        Keep(1);
      }
    }
    return std::move(repaired_);
  }

 private:
  void Keep(std::size_t length) {
    repaired_ += rest_.substr(0, length);
    rest_.remove_prefix(std::min(length, rest_.size()));
  }

  void Number() {
    std::size_t length = 0;
    while (length < rest_.size() && IsNumberCharacter(rest_[length])) ++length;
    const bool isLarge = IsLargeInteger(rest_.substr(0, length));
    Keep(length);
    if (isLarge) repaired_ += ".0";
  }

  void String() {
    Keep(1);
    while (!rest_.empty() && rest_.front() != '"') {
      if (rest_.front() == '\\') {
        Escape();
      } else {
        Keep(1);
      }
    }
    Keep(1);
  }

  void Escape() {
    const int unit = EscapedUnit(rest_);
    if (unit < 0) return Keep(2);
    if (IsHighSurrogate(unit) && IsLowSurrogate(EscapedUnit(rest_.substr(kEscapeLength))))
      return Keep(2 * kEscapeLength);
    if (!IsHighSurrogate(unit) && !IsLowSurrogate(unit)) return Keep(kEscapeLength);
    repaired_ += "\\ufffd";
    rest_.remove_prefix(kEscapeLength);
  }

  std::string_view rest_;
  std::string repaired_;
};

}  // namespace

std::string TsRepairJSON(std::string_view json) { return Repair(json).Run(); }
