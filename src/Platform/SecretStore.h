#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Result.h"

namespace tessaro::platform {

// Bytes that are overwritten when they are freed, NUL characters included.
class Secret {
 public:
  Secret() = default;

  // Room for `capacity` bytes that the caller writes to Data().
  explicit Secret(std::size_t capacity)
      : bytes_(std::make_unique<char[]>(capacity)), capacity_(capacity), size_(capacity) {}

  explicit Secret(std::string_view bytes) : Secret(bytes.size()) { bytes.copy(Data(), bytes.size()); }

  Secret(Secret&& other) noexcept
      : bytes_(std::move(other.bytes_)),
        capacity_(std::exchange(other.capacity_, 0)),
        size_(std::exchange(other.size_, 0)) {}

  Secret& operator=(Secret&& other) noexcept {
    std::swap(bytes_, other.bytes_);
    std::swap(capacity_, other.capacity_);
    std::swap(size_, other.size_);
    return *this;
  }

  ~Secret() {
    // Volatile: the compiler would drop writes that are never read.
    volatile char* bytes = bytes_.get();
    for (std::size_t i = 0; i < capacity_; ++i) bytes[i] = 0;
  }

  [[nodiscard]] char* Data() { return bytes_.get(); }
  [[nodiscard]] std::string_view View() const { return {bytes_.get(), size_}; }

  // Drops everything after the first `size` bytes.
  void Shorten(std::size_t size) { size_ = size; }

 private:
  std::unique_ptr<char[]> bytes_;
  std::size_t capacity_ = 0;
  std::size_t size_ = 0;
};

// The codes of failures, in the numbers that a keychain gives for them. A system's keychain may give others.
struct SecretFailure {
  static constexpr int kParameter = -50;                 // a text that the store can't take, as one with a NUL
  static constexpr int kUserCancelled = -128;            // the user dismissed the prompt
  static constexpr int kInternalComponent = -2070;       // any failure that none of the others describes
  static constexpr int kNotAvailable = -25291;           // there is no store, it went away, or does not reply in time
  static constexpr int kAuthorizationFailed = -25293;    // the store refuses this application
  static constexpr int kItemNotFound = -25300;           // the store is unlocked, and has no such item
  static constexpr int kInteractionNotAllowed = -25308;  // the store is locked, and was not unlocked in time
  static constexpr int kDecode = -26275;                 // the stored bytes are malformed
};

// One item of the store. It may be gone by the time it is used.
struct SecretItem {
  std::string reference;
};

// The user's store of secrets: items of a service, one an account, each with bytes that only the user may see.
//
// Nothing is cached: a change by another program is seen at once. Calls wait for the store, and for the user when the
// store has to be unlocked, each with a deadline. Main thread only. Texts are UTF-8. Nothing throws.
class SecretStore {
 public:
  using Items = std::vector<SecretItem>;
  using AccountNames = std::vector<std::optional<std::string>>;

  struct Deadlines {
    std::chrono::milliseconds reply{5000};  // halved after each call without a reply, whole again after a reply
    std::chrono::milliseconds user{60000};  // for unlocking
  };

  // The process's own, made on first use.
  static SecretStore& Shared() {
    static Forever<SecretStore> store(Deadlines{});
    return *store;
  }

  explicit SecretStore(Deadlines deadlines);
  ~SecretStore();
  SecretStore(const SecretStore&) = delete;
  SecretStore& operator=(const SecretStore&) = delete;

  // The items of `service`, at least one on success; of any account when there is no `account`. A locked store is
  // unlocked before the result is that it has none.
  [[nodiscard]] Result<Items> Find(std::string_view service, std::optional<std::string_view> account) noexcept;

  // The same, without unlocking. For a caller who adds an item that is not found: Add() replaces one that is hidden.
  [[nodiscard]] Result<Items> FindVisible(std::string_view service, std::string_view account) noexcept;

  [[nodiscard]] Result<Secret> Read(const SecretItem& item) noexcept;

  // The account names of `items`, in their order; nothing for those that are gone or have none.
  [[nodiscard]] Result<AccountNames> Accounts(std::span<const SecretItem> items) noexcept;

  [[nodiscard]] Result<void> Add(std::string_view service, std::string_view account, const Secret& secret) noexcept;
  [[nodiscard]] Result<void> Replace(const SecretItem& item, const Secret& secret) noexcept;
  [[nodiscard]] Result<void> Remove(const SecretItem& item) noexcept;

  // Leaves the store; a later call connects again.
  void Close() noexcept;
  static constexpr EndStage kEnd = EndStage::Services;

 private:
  struct Body;
  std::unique_ptr<Body> body_;
};

}  // namespace tessaro::platform
