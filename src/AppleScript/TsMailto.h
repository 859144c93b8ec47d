#pragma once

#include <string>

#include "Base/Result.h"

// Composes the message that a mailto link describes, as a script would; fails when the link is refused. Main thread
// only.
[[nodiscard]] Result<void> TsComposeMailtoLink(const std::string& link);
