#pragma once

#include <optional>
#include <string>

// Composes the message that a mailto link describes, as if a script had. Gives the reason when the link is refused;
// then nothing is composed. Main thread only.
[[nodiscard]] std::optional<std::string> TsComposeMailtoLink(const std::string& link);
