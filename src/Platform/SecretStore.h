#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/Result.h"
#include "Platform/Secret.h"

namespace tessaro::platform {

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
