#pragma once

// Items by their object paths: libsecret's own objects for them cost a round trip each.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/Linux/Base/GLibOwners.h"
#include "Platform/SecretStore.h"

namespace tessaro::platform {

// How long to wait for a reply. Halves after every unanswered call, so that many calls to a dead service do not add up;
// resets on the first reply.
class ReplyTimeout {
 public:
  explicit ReplyTimeout(std::chrono::milliseconds whole) : whole_(whole), left_(whole) {}

  [[nodiscard]] int Milliseconds() const { return static_cast<int>(left_.count()); }
  void Reset() { left_ = whole_; }
  void Halve();

 private:
  std::chrono::milliseconds whole_;
  std::chrono::milliseconds left_;
};

// One of SecretFailure's codes, with a sentence for the log.
[[nodiscard]] tl::unexpected<Failure> FailWith(int code);

// A session with the Secret Service, in which secrets travel encrypted.
//
// libsecret insists on GLib's shared connection to the bus. By default that ends the process when the bus goes away,
// which is switched off here. Calls wait in a main context of the session's own, never in the program's.
class SecretServiceSession {
 public:
  using Reply = Result<GVariantPtr>;

  // Null when there is no bus or no service. `timeout` must outlive the session.
  [[nodiscard]] static std::unique_ptr<SecretServiceSession> Open(ReplyTimeout& timeout);
  ~SecretServiceSession();

  // Calls a method and waits for its reply of `type`.
  [[nodiscard]] Reply Call(const char* path, const char* interface, const char* method, GVariant* arguments,
                           const char* type);

  // Reads a property of each item, all at once; the replies are in the order of `paths`.
  [[nodiscard]] std::vector<Reply> GetEach(const std::vector<std::string>& paths, const char* property);

  // Shows a prompt and waits for the user.
  [[nodiscard]] Result<void> Prompt(const char* path, std::chrono::milliseconds timeout);

  // A secret in the form of the service, and back.
  [[nodiscard]] GVariantPtr Encode(const Secret& secret);
  [[nodiscard]] Result<Secret> Decode(GVariant* encoded);

  [[nodiscard]] const char* Path() { return secret_service_get_session_dbus_path(service_.get()); }

  // Whether the service or the bus has been restarted since the session was opened.
  [[nodiscard]] bool IsStale() const { return isStale_; }

 private:
  using Start = std::function<void(GCancellable*, GAsyncReadyCallback, gpointer)>;

  explicit SecretServiceSession(ReplyTimeout& timeout) : context_(g_main_context_new()), timeout_(timeout) {}

  // Runs an asynchronous call of GLib's to its end, and cancels it at the deadline.
  [[nodiscard]] GObjectPtr<GAsyncResult> Wait(int milliseconds, const Start& start);
  [[nodiscard]] bool Connect();
  [[nodiscard]] Reply ReplyOf(GVariant* value, GError* error);

  GMainContextPtr context_;
  GObjectPtr<GDBusConnection> bus_;
  GObjectPtr<SecretService> service_;
  ReplyTimeout& timeout_;
  bool isStale_ = false;
};

}  // namespace tessaro::platform
