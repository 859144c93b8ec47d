#pragma once

// Items by their object paths, which libsecret does not promise to keep as it is: proxies cost a round trip each.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "Platform/Linux/GLibOwners.h"
#include "Platform/Secret.h"
#include "Platform/SecretStore.h"

namespace tessaro::platform {

enum class SecretServiceFailure {
  None,
  NoService,      // nobody on the bus, or no bus
  Stale,          // the service or the bus is another than when we connected
  NoAnswer,       // not in time
  Locked,         // and nobody to open it, or not in time
  Dismissed,      // the person does not want to open it
  UnknownObject,  // it does not exist, or no longer
  Refused,
  Other,
};

// A reply, or why there is none.
struct SecretServiceReply {
  GVariantPtr value;
  SecretServiceFailure failure = SecretServiceFailure::None;

  explicit operator bool() const { return value != nullptr; }
};

// One connection to the Secret Service, with a session in which secrets travel encrypted. When the bus or the service
// has gone, it is of no use any more.
//
// The bus connection is its own: GLib's shared one would end the process together with the bus. Calls wait; while a
// prompt is shown, a main context of the client's own turns, never the program's.
class SecretServiceClient {
 public:
  // Empty when there is no bus or no service.
  static std::unique_ptr<SecretServiceClient> Connect(SecretStore::Deadlines deadlines);

  // Calls a method and waits for its reply of `type`.
  [[nodiscard]] SecretServiceReply Call(const char* path, const char* interface, const char* method,
                                        GVariant* arguments, const char* type);

  // Calls a method of each of `paths` at once, and gives the replies in their order.
  [[nodiscard]] std::vector<SecretServiceReply> CallEach(std::span<const std::string> paths, const char* interface,
                                                         const char* method,
                                                         const std::function<GVariant*()>& arguments, const char* type);

  // Shows the prompt that a method has answered with, and waits for the person.
  [[nodiscard]] SecretServiceFailure Prompt(const char* path);

  // A secret as the service wants it, and the other way round; empty when the service sent something else.
  [[nodiscard]] GVariantPtr Encode(const Secret& secret);
  [[nodiscard]] std::optional<Secret> Decode(GVariant* encoded);

  [[nodiscard]] const char* SessionPath() { return secret_service_get_session_dbus_path(service_.get()); }

 private:
  explicit SecretServiceClient(SecretStore::Deadlines deadlines);

  GMainContextPtr context_;
  GObjectPtr<GDBusConnection> bus_;
  GObjectPtr<SecretService> service_;
  SecretStore::Deadlines deadlines_;
};

}  // namespace tessaro::platform
