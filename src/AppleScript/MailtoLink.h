#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"

// The message that a mailto link (RFC 6068) describes; UTF-8. Other headers are ignored: a link must neither attach
// files nor set the sender.
struct MailtoLink {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
};

// Fails for a text that is no link, or that would smuggle in more than a link may say.
[[nodiscard]] Result<MailtoLink> ParseMailtoLink(std::string_view link);
