#include "Platform/Common/VersionOrder.h"

#include <algorithm>

namespace tessaro::platform {

namespace {

bool IsDigit(unsigned char c) { return c >= '0' && c <= '9'; }
// Bytes beyond ASCII are letters of some language.
bool IsLetter(unsigned char c) { return (c | 0x20) >= 'a' && ((c | 0x20) <= 'z' || c >= 0x80); }

// Takes the runs off a version, one at a time.
class Runs {
 public:
  explicit Runs(std::string_view version) : rest_(version) {}

  // Empty at the end.
  std::string_view Next() {
    const auto isSeparator = [](char c) { return !IsDigit(c) && !IsLetter(c); };
    rest_.remove_prefix(std::find_if_not(rest_.begin(), rest_.end(), isSeparator) - rest_.begin());
    const bool isNumber = !rest_.empty() && IsDigit(rest_.front());
    const auto end = std::find_if_not(rest_.begin(), rest_.end(), isNumber ? IsDigit : IsLetter);
    const auto run = rest_.substr(0, end - rest_.begin());
    rest_.remove_prefix(run.size());
    return run;
  }

 private:
  std::string_view rest_;
};

// Version numbers may be longer than any integer.
std::weak_ordering CompareNumbers(std::string_view left, std::string_view right) {
  for (std::string_view* number : {&left, &right}) {
    number->remove_prefix(std::min(number->find_first_not_of('0'), number->size()));
  }
  const auto bySize = left.size() <=> right.size();
  return std::is_neq(bySize) ? bySize : left.compare(right) <=> 0;
}

std::weak_ordering CompareRuns(std::string_view left, std::string_view right) {
  const bool isNumber = IsDigit(left.front());
  if (isNumber != IsDigit(right.front())) return isNumber <=> !isNumber;
  return isNumber ? CompareNumbers(left, right) : left.compare(right) <=> 0;
}

}  // namespace

std::weak_ordering CompareVersions(std::string_view left, std::string_view right) noexcept {
  Runs leftRuns(left);
  Runs rightRuns(right);
  for (;;) {
    const auto leftRun = leftRuns.Next();
    const auto rightRun = rightRuns.Next();
    if (leftRun.empty() && rightRun.empty()) return std::weak_ordering::equivalent;
    // A version with a further word precedes the one without: 1.0b before 1.0.
    if (leftRun.empty()) return IsDigit(rightRun.front()) ? std::weak_ordering::less : std::weak_ordering::greater;
    if (rightRun.empty()) return IsDigit(leftRun.front()) ? std::weak_ordering::greater : std::weak_ordering::less;
    const auto order = CompareRuns(leftRun, rightRun);
    if (std::is_neq(order)) return order;
  }
}

}  // namespace tessaro::platform
