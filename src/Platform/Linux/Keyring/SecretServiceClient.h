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

#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/Secret.h"

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

// How long a service is waited for that may not answer. Each time that it does not is half as long as the one before,
// so that a program with many questions isn't kept for each of them; with the first answer it is whole again.
class Patience {
 public:
  explicit Patience(std::chrono::milliseconds whole) : whole_(whole), left_(whole) {}

  [[nodiscard]] std::chrono::milliseconds Left() const { return left_; }
  void DidAnswer() { left_ = whole_; }
  void DidNotAnswer();

 private:
  std::chrono::milliseconds whole_;
  std::chrono::milliseconds left_;
};

// One connection to the Secret Service, with a session in which secrets travel encrypted. When the bus or the service
// has gone, it is of no use any more.
//
// The bus connection is its own: GLib's shared one would end the process together with the bus. Calls wait; while a
// prompt is shown, a main context of the client's own turns, never the program's.
class SecretServiceClient {
 public:
  // Empty when there is no bus or no service. `patience` must outlive the client.
  static std::unique_ptr<SecretServiceClient> Connect(Patience& patience, std::chrono::milliseconds forThePerson);

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
  SecretServiceClient(Patience& patience, std::chrono::milliseconds forThePerson);

  [[nodiscard]] int Deadline() const { return static_cast<int>(patience_.Left().count()); }
  [[nodiscard]] SecretServiceReply Heard(SecretServiceReply reply);

  GMainContextPtr context_;
  GObjectPtr<GDBusConnection> bus_;
  GObjectPtr<SecretService> service_;
  Patience& patience_;
  std::chrono::milliseconds forThePerson_;
};

}  // namespace tessaro::platform
