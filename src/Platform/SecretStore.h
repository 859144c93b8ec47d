#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Secret.h"

namespace tessaro::platform {

// Outcomes of the store, in the numbers that a keychain gives for them. A system's keychain may give others.
enum class SecretStatus : std::int32_t {
  Success = 0,
  Parameter = -50,                 // a text that the store can't take, such as one with a NUL character
  UserCancelled = -128,            // the user dismissed the prompt
  InternalComponent = -2070,       // any failure that none of the others describes
  NotAvailable = -25291,           // there is no store, it does not reply in time, or it went away
  AuthorizationFailed = -25293,    // the store refuses this application
  ItemNotFound = -25300,           // the store is unlocked, and has no such item
  InteractionNotAllowed = -25308,  // the store is locked, and was not unlocked in time
  Decode = -26275,                 // the stored bytes are malformed
};

template <typename Value>
struct SecretResult {
  SecretStatus status;
  Value value{};  // only on success
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
  struct Deadlines {
    std::chrono::milliseconds reply{5000};  // halved after each call without a reply, whole again after a reply
    std::chrono::milliseconds user{60000};  // for unlocking
  };

  [[nodiscard]] static std::unique_ptr<SecretStore> WithDeadlines(Deadlines deadlines);

  // The process's own, made on first use.
  static SecretStore& Shared();

  virtual ~SecretStore() = default;
  SecretStore(const SecretStore&) = delete;
  SecretStore& operator=(const SecretStore&) = delete;

  // The items of `service`, at least one on success; of any account when there is no `account`. A locked store is
  // unlocked before the result is that it has none.
  [[nodiscard]] virtual SecretResult<std::vector<SecretItem>> Find(
      std::string_view service, std::optional<std::string_view> account) noexcept = 0;

  // The same, without unlocking. For a caller who adds an item that is not found: Add() replaces one that is hidden.
  [[nodiscard]] virtual SecretResult<std::vector<SecretItem>> FindVisible(std::string_view service,
                                                                          std::string_view account) noexcept = 0;

  [[nodiscard]] virtual SecretResult<Secret> Read(const SecretItem& item) noexcept = 0;

  // The account names of `items`, in their order; nothing for those that are gone or have none.
  [[nodiscard]] virtual SecretResult<std::vector<std::optional<std::string>>> Accounts(
      std::span<const SecretItem> items) noexcept = 0;

  [[nodiscard]] virtual SecretStatus Add(std::string_view service, std::string_view account,
                                         const Secret& secret) noexcept = 0;
  [[nodiscard]] virtual SecretStatus Replace(const SecretItem& item, const Secret& secret) noexcept = 0;
  [[nodiscard]] virtual SecretStatus Remove(const SecretItem& item) noexcept = 0;

 protected:
  SecretStore() = default;
};

// A sentence for the log.
[[nodiscard]] std::string_view Message(SecretStatus status) noexcept;

}  // namespace tessaro::platform
