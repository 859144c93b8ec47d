#pragma once

#include <string>
#include <string_view>

// Rewrites what JSON allows but the parser refuses: integers of more than 64 bits are given a fraction, which makes
// them doubles, and escaped lone surrogates become escaped U+FFFD. Text in other respects malformed stays malformed.
[[nodiscard]] std::string TsRepairJSON(std::string_view json);
