#pragma once

#include <string>

// Turns escaped lone surrogates, which JSON allows and UTF-8 cannot hold, into escaped U+FFFD of the same length.
void TsReplaceLoneEscapedSurrogates(std::string& json);
