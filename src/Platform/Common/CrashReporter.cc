#include "Platform/CrashReporter.h"

#include <cerrno>
#include <cstdlib>
#include <optional>
#include <system_error>
#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Common/CrashRecord.h"
#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr std::string_view kScheme = "https://";
constexpr std::size_t kKeyLength = 32;

bool IsKey(std::string_view text) {
  return text.size() == kKeyLength && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

// Removes the text up to the separator, and returns it without the separator; nothing where that is missing.
std::optional<std::string_view> Take(std::string_view& text, char separator) {
  const auto end = text.find(separator);
  if (end == std::string_view::npos) return std::nullopt;
  const auto taken = text.substr(0, end);
  text.remove_prefix(end + 1);
  return taken;
}

bool IsProjectAddress(std::string_view address) {
  if (!address.starts_with(kScheme)) return false;
  address.remove_prefix(kScheme.size());
  const auto publicKey = Take(address, ':');
  const auto secretKey = Take(address, '@');
  const auto host = Take(address, '/');
  return publicKey && IsKey(*publicKey) && secretKey && IsKey(*secretKey) && host && !host->empty() && !address.empty();
}

std::optional<CrashRecord>& OwnRecord() {
  static Forever<std::optional<CrashRecord>> record;
  return *record;
}

Result<void> HandleOwnCrashes(const std::filesystem::path& directory, CrashReporter::FaultClaim claim) {
  auto record = CrashRecord::In(directory);
  if (!record) return tl::unexpected(record.error());
  const int file = OwnRecord().emplace(std::move(*record)).descriptor();
  std::atexit([] { OwnRecord()->RemoveIfUnused(); });
  if (HandleCrashes(file, claim)) return {};
  return Fail(errno, std::generic_category().message(errno));
}

}  // namespace

CrashReporter::CrashReporter(Hooks hooks) : hooks_(std::move(hooks)) {}

Result<std::unique_ptr<CrashReporter>> CrashReporter::ForProject(std::string_view address, Hooks hooks) {
  if (!IsProjectAddress(address)) return Fail("malformed project address: " + std::string(address));
  return std::unique_ptr<CrashReporter>(new CrashReporter(std::move(hooks)));
}

Result<void> CrashReporter::Start(const std::filesystem::path& directory, FaultClaim claim) {
  // On a later turn: a process that ends right after its start would take the records and report none of them.
  MainQueue::Shared().Post([this, directory] {
    for (CrashEvent& event : TakeCrashEvents(directory)) {
      hooks_.beforeSerialising(event);
      static_cast<void>(hooks_.shouldSend(event));
    }
  });
  return HandleOwnCrashes(directory, claim);
}

// Sanitizers would report this fault instead of letting it crash.
__attribute__((no_sanitize("undefined", "address"))) void CrashReporter::Crash() {
  volatile int* volatile nowhere = nullptr;
  *nowhere = 0;
  std::abort();
}

}  // namespace tessaro::platform
