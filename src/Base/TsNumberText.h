#pragma once

#include <optional>
#include <string>
#include <string_view>

// Numbers as text with a decimal point, whatever the process's locale. For doubles: the C++ library of older systems
// has std::to_chars() and std::from_chars() for integers only.

// 15 to 17 significant digits, as many as it takes to read the same number back.
[[nodiscard]] std::string TsNumberText(double value);

// The number, if the whole text is one: no white space, no hexadecimal digits, no infinities.
[[nodiscard]] std::optional<double> TsNumberInText(std::string_view text);
