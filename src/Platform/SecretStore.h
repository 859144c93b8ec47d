#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Lifetime.h"
#include "Platform/Secret.h"

namespace tessaro::platform {

// Outcomes of the store, in the numbers that a keychain gives for them. A system's keychain may answer others.
enum class SecretStatus : std::int32_t {
  Success = 0,
  Parameter = -50,                 // a text that the store can't take, as one with a NUL character
  UserCancelled = -128,            // the person dismissed the prompt
  InternalComponent = -2070,       // the store failed in a way that none of the others describes
  NotAvailable = -25291,           // there is no store, it does not answer in time, or it went away
  AuthorizationFailed = -25293,    // the store refuses us
  ItemNotFound = -25300,           // the store is open, and has no such item
  InteractionNotAllowed = -25308,  // the store is locked, and there is nobody to open it, or not in time
  Decode = -26275,                 // the stored bytes are not what they should be
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

// The user's store of secrets: items of a service, one an account, each with bytes nobody else should see.
//
// Nothing is cached: what another program changes is seen at once. Calls wait for the store, and for the person when
// the store has to be opened, each with a deadline. Main thread only. Texts are UTF-8. Nothing throws.
class SecretStore {
 public:
  struct Deadlines {
    std::chrono::milliseconds answer{5000};   // for the store; less and less for one that never answers
    std::chrono::milliseconds person{60000};  // for somebody to open it
  };

  explicit SecretStore(Deadlines deadlines);
  ~SecretStore();

  // The process's own, on first use.
  static SecretStore& Shared();

  // The items of `service`, at least one on success; of any account when there is no `account`. A store that is closed
  // is opened before it is believed to have none.
  [[nodiscard]] SecretResult<std::vector<SecretItem>> Find(std::string_view service,
                                                           std::optional<std::string_view> account) noexcept;

  // The same for somebody who is going to add what is missing: a store that is closed may hide an item, which Add()
  // then replaces.
  [[nodiscard]] SecretResult<std::vector<SecretItem>> FindVisible(std::string_view service,
                                                                  std::string_view account) noexcept;

  [[nodiscard]] SecretResult<Secret> Read(const SecretItem& item) noexcept;

  // The account names of `items`, in their order; nothing for those that can't be read.
  [[nodiscard]] SecretResult<std::vector<std::optional<std::string>>> Accounts(
      std::span<const SecretItem> items) noexcept;

  [[nodiscard]] SecretStatus Add(std::string_view service, std::string_view account, const Secret& secret) noexcept;
  [[nodiscard]] SecretStatus Replace(const SecretItem& item, const Secret& secret) noexcept;
  [[nodiscard]] SecretStatus Remove(const SecretItem& item) noexcept;

  // Lets go of the connection to the store, until the next call.
  static constexpr EndStage kEnd = EndStage::Services;
  void Close() noexcept;

 private:
  class Body;
  std::unique_ptr<Body> body_;
};

// What the status means, in words for the log.
[[nodiscard]] std::string_view Message(SecretStatus status) noexcept;

}  // namespace tessaro::platform
