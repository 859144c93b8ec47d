#include "AppleScript/MailtoLink.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "Base/TextPieces.h"
#include "Base/TsUnicode.h"

namespace {

constexpr std::string_view kScheme = "mailto:";

// Nothing when a percent sign stands without two hexadecimal digits.
std::optional<std::string> WithoutEscapes(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '%') {
      result += text[i];
      continue;
    }
    unsigned char byte = 0;
    const char* digits = text.data() + i + 1;
    if (text.size() - i < 3 || std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) return std::nullopt;
    result += static_cast<char>(byte);
    i += 2;
  }
  return result;
}

bool IsUtf8(std::string_view text) { return Utf16ToUtf8(Utf8ToUtf16(text)) == text; }

bool IsControl(unsigned char character) { return character < 0x20 || character == 0x7F; }

bool IsBodyControl(unsigned char character) {
  return IsControl(character) && character != '\r' && character != '\n' && character != '\t';
}

class Parser {
 public:
  Result<MailtoLink> Parse(std::string_view link) {
    if (!StartsWith(link, kScheme)) return Fail("It is no mailto link");
    link.remove_prefix(kScheme.size());
    link = link.substr(0, link.find('#'));
    const std::size_t question = link.find('?');
    const bool isGood = Addresses(link.substr(0, question), link_.to) &&
                        (question == std::string_view::npos || Headers(link.substr(question + 1)));
    if (!isGood) return Fail(reason_);
    return std::move(link_);
  }

 private:
  bool Refuse(std::string reason) {
    reason_ = std::move(reason);
    return false;
  }

  bool Text(std::string_view escaped, bool (*isForbidden)(unsigned char), std::string& text) {
    auto plain = WithoutEscapes(escaped);
    if (!plain) return Refuse("It has a percent sign without two hexadecimal digits");
    if (!IsUtf8(*plain)) return Refuse("It is not in UTF-8");
    // Line breaks could smuggle in more headers.
    if (std::any_of(plain->begin(), plain->end(), isForbidden)) return Refuse("It has control characters");
    text = std::move(*plain);
    return true;
  }

  // A comma that is escaped belongs to an address.
  bool Addresses(std::string_view list, std::vector<std::string>& addresses) {
    for (const std::string_view piece : Split(list, ',')) {
      std::string address;
      if (!Text(piece, IsControl, address)) return false;
      if (!address.empty()) addresses.push_back(std::move(address));
    }
    return true;
  }

  bool Headers(std::string_view headers) {
    for (const std::string_view header : Split(headers, '&')) {
      if (header.empty()) continue;
      const std::size_t equals = header.find('=');
      if (equals == std::string_view::npos) return Refuse("It has a header without a value");
      std::string name;
      if (!Text(header.substr(0, equals), IsControl, name)) return false;
      if (!Header(LowerCase(name), header.substr(equals + 1))) return false;
    }
    return true;
  }

  bool Header(const std::string& name, std::string_view value) {
    if (name == "to") return Addresses(value, link_.to);
    if (name == "cc") return Addresses(value, link_.cc);
    if (name == "bcc") return Addresses(value, link_.bcc);
    if (name == "subject") return Text(value, IsControl, link_.subject);
    if (name == "body") return Text(value, IsBodyControl, link_.body);
    return true;
  }

  MailtoLink link_;
  std::string reason_;
};

}  // namespace

Result<MailtoLink> ParseMailtoLink(std::string_view link) { return Parser().Parse(link); }
