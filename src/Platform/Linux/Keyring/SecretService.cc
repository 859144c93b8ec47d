#include "Platform/Linux/Keyring/SecretService.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <utility>

namespace tessaro::platform {

namespace {

constexpr char kService[] = "org.freedesktop.secrets";
constexpr char kItem[] = "org.freedesktop.Secret.Item";
constexpr char kPrompt[] = "org.freedesktop.Secret.Prompt";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
// A bus keeps at most 128 unanswered calls of a client unless its limit has been raised.
constexpr std::size_t kMostCallsAtOnce = 64;
// Long enough for a working service.
constexpr std::chrono::milliseconds kShortestTimeout{50};

// GLib would start a bus of its own where the session has none.
bool HasBus() {
  if (std::getenv("DBUS_SESSION_BUS_ADDRESS") != nullptr) return true;
  const char* directory = std::getenv("XDG_RUNTIME_DIR");
  std::error_code error;
  return directory != nullptr && std::filesystem::exists(std::filesystem::path(directory) / "bus", error);
}

// Makes `context` the one that gets replies.
class ContextScope {
 public:
  explicit ContextScope(GMainContext* context) : context_(context) { g_main_context_push_thread_default(context_); }
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;
  ~ContextScope() { g_main_context_pop_thread_default(context_); }

 private:
  GMainContext* context_;
};

// Cancels a call, and wakes its context, after a time.
class Deadline {
 public:
  Deadline(GMainContext* context, int milliseconds)
      : cancellable_(g_cancellable_new()), alarm_(g_timeout_source_new(static_cast<guint>(milliseconds))) {
    const auto cancel = [](gpointer passed) -> gboolean {
      g_cancellable_cancel(static_cast<GCancellable*>(passed));
      return G_SOURCE_REMOVE;
    };
    g_source_set_callback(alarm_.get(), cancel, cancellable_.get(), nullptr);
    g_source_attach(alarm_.get(), context);
  }
  Deadline(const Deadline&) = delete;
  Deadline& operator=(const Deadline&) = delete;
  ~Deadline() { g_source_destroy(alarm_.get()); }

  [[nodiscard]] GCancellable* Cancellable() const { return cancellable_.get(); }
  [[nodiscard]] bool IsOver() const { return g_cancellable_is_cancelled(cancellable_.get()); }

 private:
  GObjectPtr<GCancellable> cancellable_;
  GSourcePtr alarm_;
};

// Without a display the service dismisses its own prompts: then no user was asked.
int DismissedCode() {
  const bool hasDisplay = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
  return hasDisplay ? SecretFailure::kUserCancelled : SecretFailure::kInteractionNotAllowed;
}

// The end of a prompt. libsecret's own objects for prompts take some dismissals for a success, and wait without a
// deadline for a service that ignores them.
class PromptOutcome {
 public:
  PromptOutcome(GDBusConnection* bus, const char* path)
      : bus_(bus),
        completed_(g_dbus_connection_signal_subscribe(bus, kService, kPrompt, "Completed", path, nullptr,
                                                      G_DBUS_SIGNAL_FLAGS_NONE, Completed, this, nullptr)),
        owner_(g_bus_watch_name_on_connection(bus, kService, G_BUS_NAME_WATCHER_FLAGS_NONE, nullptr, Vanished, this,
                                              nullptr)) {}
  PromptOutcome(const PromptOutcome&) = delete;
  PromptOutcome& operator=(const PromptOutcome&) = delete;
  ~PromptOutcome() {
    g_dbus_connection_signal_unsubscribe(bus_, completed_);
    g_bus_unwatch_name(owner_);
  }

  [[nodiscard]] const std::optional<Result<void>>& Get() const { return result_; }

 private:
  static void Completed(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
                        gpointer self) {
    gboolean isDismissed = TRUE;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(bv)")))
      g_variant_get(arguments, "(bv)", &isDismissed, nullptr);
    auto& result = static_cast<PromptOutcome*>(self)->result_;
    result.emplace();
    if (isDismissed) *result = FailWith(DismissedCode());
  }

  // Also when the connection is closed.
  static void Vanished(GDBusConnection*, const char*, gpointer self) {
    static_cast<PromptOutcome*>(self)->result_ = FailWith(SecretFailure::kNotAvailable);
  }

  GDBusConnection* bus_;
  guint completed_;
  guint owner_;
  std::optional<Result<void>> result_;
};

struct RemoteError {
  std::string_view name;
  int code;
  bool isStale = false;
};

constexpr RemoteError kRemoteErrors[] = {
    {"org.freedesktop.Secret.Error.IsLocked", SecretFailure::kInteractionNotAllowed},
    {"org.freedesktop.Secret.Error.NoSession", SecretFailure::kNotAvailable, true},
    {"org.freedesktop.Secret.Error.NoSuchObject", SecretFailure::kItemNotFound},
    {"org.freedesktop.DBus.Error.UnknownObject", SecretFailure::kItemNotFound},
    {"org.freedesktop.DBus.Error.UnknownMethod", SecretFailure::kItemNotFound},
    {"org.freedesktop.DBus.Error.ServiceUnknown", SecretFailure::kNotAvailable, true},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", SecretFailure::kNotAvailable, true},
    {"org.freedesktop.DBus.Error.NoReply", SecretFailure::kNotAvailable, true},
    {"org.freedesktop.DBus.Error.Disconnected", SecretFailure::kNotAvailable, true},
    {"org.freedesktop.DBus.Error.AccessDenied", SecretFailure::kAuthorizationFailed},
};

RemoteError RemoteErrorOf(const GError* error) {
  const GTextPtr name(g_dbus_error_get_remote_error(error));
  // Without a name the error comes from this side of the bus, which fails only when the connection does.
  if (!name && error->domain == G_IO_ERROR) return {"", SecretFailure::kNotAvailable, true};
  for (const RemoteError& known : kRemoteErrors) {
    if (name && known.name == name.get()) return known;
  }
  return {"", SecretFailure::kInternalComponent};
}

bool IsTimeout(const GError* error) {
  return g_error_matches(error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) ||
         g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CANCELLED) ||
         g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_TIMEOUT) ||
         g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_TIMED_OUT);
}

struct Sentence {
  int code;
  const char* text;
};

constexpr Sentence kSentences[] = {
    {SecretFailure::kParameter, "The secret service does not accept texts with a NUL character."},
    {SecretFailure::kUserCancelled, "The user dismissed the prompt."},
    {SecretFailure::kNotAvailable, "The secret service is unavailable or did not reply in time."},
    {SecretFailure::kAuthorizationFailed, "The secret service refused this application."},
    {SecretFailure::kItemNotFound, "The item does not exist."},
    {SecretFailure::kInteractionNotAllowed, "The keyring is locked and was not unlocked in time."},
    {SecretFailure::kDecode, "The stored bytes are malformed."},
};

}  // namespace

tl::unexpected<Failure> FailWith(int code) {
  for (const auto& [known, text] : kSentences) {
    if (known == code) return Fail(code, text);
  }
  return Fail(code, "The secret service failed.");
}

void ReplyTimeout::Halve() { left_ = std::max(left_ / 2, std::min(whole_, kShortestTimeout)); }

std::unique_ptr<SecretServiceSession> SecretServiceSession::Open(ReplyTimeout& timeout) {
  if (!HasBus()) return nullptr;
  std::unique_ptr<SecretServiceSession> session(new SecretServiceSession(timeout));
  return session->Connect() ? std::move(session) : nullptr;
}

SecretServiceSession::~SecretServiceSession() {
  // Pending callbacks hold the service's objects, and these the connection, which may be closed: run them.
  service_.reset();
  bus_.reset();
  while (g_main_context_iteration(context_.get(), FALSE)) {
  }
}

bool SecretServiceSession::Connect() {
  GError* error = nullptr;
  const auto connected = Wait(timeout_.Milliseconds(), [](GCancellable* cancellable, auto callback, gpointer data) {
    g_bus_get(G_BUS_TYPE_SESSION, cancellable, callback, data);
  });
  bus_.reset(g_bus_get_finish(connected.get(), &error));
  if (bus_) {
    g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
    const auto opened = Wait(timeout_.Milliseconds(), [](GCancellable* cancellable, auto callback, gpointer data) {
      secret_service_open(SECRET_TYPE_SERVICE, nullptr, SECRET_SERVICE_OPEN_SESSION, cancellable, callback, data);
    });
    service_.reset(secret_service_open_finish(opened.get(), &error));
  }
  const GErrorPtr failure(error);
  if (failure && IsTimeout(failure.get())) timeout_.Halve();
  return service_ != nullptr;
}

GObjectPtr<GAsyncResult> SecretServiceSession::Wait(int milliseconds, const Start& start) {
  const ContextScope scope(context_.get());
  const Deadline deadline(context_.get(), milliseconds);
  GAsyncResult* result = nullptr;
  const auto finished = [](GObject*, GAsyncResult* given, gpointer data) {
    *static_cast<GAsyncResult**>(data) = static_cast<GAsyncResult*>(g_object_ref(given));
  };
  start(deadline.Cancellable(), finished, &result);
  while (result == nullptr) g_main_context_iteration(context_.get(), TRUE);
  return GObjectPtr<GAsyncResult>(result);
}

SecretServiceSession::Reply SecretServiceSession::ReplyOf(GVariant* value, GError* error) {
  const GErrorPtr failure(error);
  if (failure && IsTimeout(failure.get())) {
    timeout_.Halve();
    return FailWith(SecretFailure::kNotAvailable);
  }
  timeout_.Reset();
  if (!failure) return GVariantPtr(value);
  const RemoteError remote = RemoteErrorOf(failure.get());
  isStale_ = isStale_ || remote.isStale;
  return FailWith(remote.code);
}

SecretServiceSession::Reply SecretServiceSession::Call(const char* path, const char* interface, const char* method,
                                                       GVariant* arguments, const char* type) {
  GError* error = nullptr;
  GVariant* value =
      g_dbus_connection_call_sync(bus_.get(), kService, path, interface, method, arguments, G_VARIANT_TYPE(type),
                                  G_DBUS_CALL_FLAGS_NONE, timeout_.Milliseconds(), nullptr, &error);
  return ReplyOf(value, error);
}

std::vector<SecretServiceSession::Reply> SecretServiceSession::GetEach(const std::vector<std::string>& paths,
                                                                       const char* property) {
  struct Pending {
    SecretServiceSession* session;
    std::size_t* open;
    Reply* reply;
  };
  const auto finish = [](GObject* bus, GAsyncResult* result, gpointer data) {
    const auto& pending = *static_cast<Pending*>(data);
    GError* error = nullptr;
    GVariant* value = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &error);
    *pending.reply = pending.session->ReplyOf(value, error);
    --*pending.open;
  };
  const ContextScope scope(context_.get());
  std::size_t open = 0;
  // Each call ends at its own deadline at the latest.
  const auto waitUntilOpen = [&](std::size_t most) {
    while (open > most) g_main_context_iteration(context_.get(), TRUE);
  };
  std::vector<Reply> replies(paths.size());
  std::vector<Pending> calls(paths.size());
  for (std::size_t i = 0; i < paths.size(); ++i) {
    waitUntilOpen(kMostCallsAtOnce - 1);
    calls[i] = {this, &open, &replies[i]};
    ++open;
    g_dbus_connection_call(bus_.get(), kService, paths[i].c_str(), kProperties, "Get",
                           g_variant_new("(ss)", kItem, property), G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NONE,
                           timeout_.Milliseconds(), nullptr, finish, &calls[i]);
  }
  waitUntilOpen(0);
  return replies;
}

Result<void> SecretServiceSession::Prompt(const char* path, std::chrono::milliseconds timeout) {
  const ContextScope scope(context_.get());
  const Deadline deadline(context_.get(), static_cast<int>(timeout.count()));
  const PromptOutcome outcome(bus_.get(), path);
  const auto shown = Call(path, kPrompt, "Prompt", g_variant_new("(s)", ""), "()");
  if (!shown) return tl::unexpected(shown.error());
  while (!outcome.Get() && !deadline.IsOver()) g_main_context_iteration(context_.get(), TRUE);
  if (outcome.Get()) return *outcome.Get();
  static_cast<void>(Call(path, kPrompt, "Dismiss", nullptr, "()"));
  return FailWith(SecretFailure::kInteractionNotAllowed);
}

GVariantPtr SecretServiceSession::Encode(const Secret& secret) {
  const std::string_view bytes = secret.View();
  SecretValue* value = secret_value_new(bytes.data(), static_cast<gssize>(bytes.size()), "text/plain");
  GVariantPtr encoded(g_variant_ref_sink(secret_service_encode_dbus_secret(service_.get(), value)));
  secret_value_unref(value);
  return encoded;
}

Result<Secret> SecretServiceSession::Decode(GVariant* encoded) {
  SecretValue* value = secret_service_decode_dbus_secret(service_.get(), encoded);
  if (value == nullptr) return FailWith(SecretFailure::kDecode);
  gsize size = 0;
  const char* bytes = secret_value_get(value, &size);
  Secret secret(std::string_view(bytes, size));
  secret_value_unref(value);
  return secret;
}

}  // namespace tessaro::platform
