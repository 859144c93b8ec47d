#pragma once

#include <string>
#include <string_view>
#include <variant>
#include <vector>

// What a mailto link (RFC 6068) says of a message; UTF-8. Headers other than these are passed over: a link must not
// attach files, or speak for the sender.
struct MailtoLink {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;
  std::string subject;
  std::string body;
};

struct MailtoError {
  std::string reason;
};

[[nodiscard]] std::variant<MailtoLink, MailtoError> ParseMailtoLink(std::string_view link);
