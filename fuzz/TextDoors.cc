#include <algorithm>
#include <array>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "AppleScript/MailtoLink.h"
#include "Base/TextPieces.h"
#include "Base/TsUnicode.h"
#include "Doors.h"
#include "Platform/Common/CrashRecord.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/HFSPath.h"
#include "Platform/HTMLText.h"
#include "Platform/Linux/Base/Paths.h"
#include "Platform/Linux/Network/Transfers/BodyDecoder.h"
#include "Platform/Linux/Network/Transfers/RequestSyntax.h"

namespace platform = tessaro::platform;

namespace doors {

namespace {

bool IsUTF8(std::string_view text) { return Utf16ToUtf8(Utf8ToUtf16(text)) == text; }

bool HasControls(std::string_view text, std::string_view allowed) {
  return std::any_of(text.begin(), text.end(), [&](unsigned char c) {
    return (c < 0x20 && allowed.find(static_cast<char>(c)) == allowed.npos) || c == 0x7f;
  });
}

// The part before the first line feed, which is taken off.
std::string_view TakeLine(std::string_view& bytes) {
  const auto end = bytes.find('\n');
  const std::string_view line = bytes.substr(0, end);
  bytes.remove_prefix(std::min(line.size() + 1, bytes.size()));
  return line;
}

}  // namespace

void Feed(std::string_view bytes) {
  const platform::UpdateSettings settings{"1.2b3", "11.4", "beta", {"linux", {"de", "en"}}, "2.0"};
  const auto decision = platform::DecideUpdate(bytes, settings);
  if (!decision) return Expect(!decision.error().message.empty(), "a failure has a message");
  Expect(decision->items.size() == decision->judgements.size(), "each item is judged");
  if (!decision->update) return;
  Expect(platform::IsTrustworthyAddress(decision->file.url), "an update comes from a trustworthy address");
  const auto& version = decision->items.at(*decision->update).version;
  Expect(std::is_gt(platform::CompareVersions(version, settings.currentVersion)), "an update is newer");
}

void FeedAddress(std::string_view bytes) {
  const std::string_view url = TakeLine(bytes);
  const std::string_view key = TakeLine(bytes);
  const std::string result =
      platform::WithParameters(url, {{std::string(key), std::string(bytes), "", ""}, {"a", "&", "", ""}});
  Expect(result.ends_with("&a=%26"), "parameters follow each other");
  Expect(platform::IsTrustworthyAddress(result) == platform::IsTrustworthyAddress(url), "parameters name no host");
  Expect(std::is_eq(platform::CompareVersions(key, key)), "a version is equal to itself");
  Expect(platform::CompareVersions(key, bytes) == (0 <=> platform::CompareVersions(bytes, key)),
         "versions have an order");
}

void Mailto(std::string_view bytes) {
  const auto link = ParseMailtoLink(bytes);
  if (!link) return Expect(!link.error().message.empty(), "a failure has a message");
  for (const auto* list : {&link->to, &link->cc, &link->bcc}) {
    for (const std::string& address : *list) {
      Expect(!HasControls(address, "") && IsUTF8(address), "an address has no control characters");
    }
  }
  Expect(!HasControls(link->subject, "\t") && IsUTF8(link->subject), "a subject has no control characters");
  Expect(link->body.find('\0') == std::string::npos && IsUTF8(link->body), "a body has no NUL");
}

// Pages come as strings, which are well-formed.
void HTML(std::string_view bytes) {
  const std::string text = platform::TextFromHTML(Utf16ToUtf8(Utf8ToUtf16(bytes)));
  Expect(IsUTF8(text), "the text is UTF-8");
  Expect(!text.ends_with('\n'), "the text has no line end");
}

void CrashRecord(std::string_view bytes) {
  const auto event = platform::ReadCrashRecord(bytes);
  if (event) Expect(event->signal != 0, "an event has a signal");
}

void Request(std::string_view bytes) {
  const std::string_view name = TakeLine(bytes);
  const std::string_view value = TakeLine(bytes);
  if (platform::IsToken(name)) Expect(name.find_first_of(" :\r") == name.npos, "a token ends no name");
  if (platform::IsHeaderValue(bytes)) Expect(bytes.find_first_of("\r\n") == bytes.npos, "a value is one line");
  Expect(!platform::IsFramingHeader(name) || name.size() >= 14, "framing headers are known by their whole name");
  static_cast<void>(platform::AnnouncesBody(name));
  static_cast<void>(Trimmed(bytes));
  const std::string url = platform::EncodedURL(std::string(bytes));
  Expect(platform::EncodedURL(url) == url, "an encoded URL stays as it is");
  static_cast<void>(platform::PosixPathOfHFSPath(value));
  const std::string path = platform::PathOfFileURI(std::string(value));
  Expect(path.find('\0') == path.npos, "a path has no NUL");
  const std::string uri = platform::FileURIOf(path);
  Expect(platform::FileURIOf(platform::PathOfFileURI(uri)) == uri, "the URI of a file names it");
}

// The first byte chooses the coding, the second the size of the pieces.
void Body(std::string_view bytes) {
  constexpr std::array kCodings = {"gzip", "deflate", "br", "x-gzip"};
  constexpr int kMostSteps = 4096;
  if (bytes.size() < 2) return;
  const auto decoder = platform::MakeBodyDecoder(kCodings.at(bytes[0] & 3));
  const std::size_t piece = static_cast<unsigned char>(bytes[1]) + 1U;
  std::array<char, 512> room{};
  bytes.remove_prefix(2);
  for (int step = 0; step < kMostSteps && !bytes.empty(); ++step) {
    std::span<const char> input(bytes.data(), std::min(piece, bytes.size()));
    const std::size_t before = input.size();
    const auto length = decoder->Decode(input, room);
    if (!length) return;
    Expect(*length <= room.size(), "a decoder stays within its room");
    Expect(*length > 0 || input.size() < before, "a decoder goes on");
    bytes.remove_prefix(before - input.size());
  }
}

}  // namespace doors
