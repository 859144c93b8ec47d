#include "Platform/Linux/Keyring/SecretServiceClient.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>
#include <utility>

namespace tessaro::platform {

namespace {

constexpr char kService[] = "org.freedesktop.secrets";
// A bus refuses to keep more than its limit of open questions, which is 128 where nobody has raised it.
constexpr std::size_t kMostCallsAtOnce = 64;
// Enough for a service that works.
constexpr std::chrono::milliseconds kLeastPatience{50};
constexpr char kPromptInterface[] = "org.freedesktop.Secret.Prompt";

// GLib would start a bus of its own where there is none.
std::string BusAddress() {
  if (const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS"); address != nullptr) return address;
  const char* directory = std::getenv("XDG_RUNTIME_DIR");
  return directory != nullptr ? "unix:path=" + std::string(directory) + "/bus" : "";
}

// Makes `context` the one that GLib's answers come to, for as long as it lives.
class ContextScope {
 public:
  explicit ContextScope(GMainContext* context) : context_(context) { g_main_context_push_thread_default(context_); }
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;
  ~ContextScope() { g_main_context_pop_thread_default(context_); }

 private:
  GMainContext* context_;
};

// Tells when the time is up, and wakes the context for it.
class Alarm {
 public:
  Alarm(GMainContext* context, std::chrono::milliseconds time)
      : source_(g_timeout_source_new(static_cast<guint>(time.count()))) {
    g_source_set_callback(
        source_.get(),
        [](gpointer passed) -> gboolean {
          *static_cast<bool*>(passed) = true;
          return G_SOURCE_REMOVE;
        },
        &hasGoneOff_, nullptr);
    g_source_attach(source_.get(), context);
  }
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;
  ~Alarm() { g_source_destroy(source_.get()); }

  [[nodiscard]] bool HasGoneOff() const { return hasGoneOff_; }

 private:
  GSourcePtr source_;
  bool hasGoneOff_ = false;
};

struct PendingConnection {
  GObjectPtr<GDBusConnection> connection;
  bool isDone = false;
};

void ConnectionMade(GObject*, GAsyncResult* result, gpointer data) {
  auto& pending = *static_cast<PendingConnection*>(data);
  pending.connection.reset(g_dbus_connection_new_for_address_finish(result, nullptr));
  pending.isDone = true;
}

// A bus that takes the connection and says nothing is no bus after the deadline.
GObjectPtr<GDBusConnection> ConnectToBus(GMainContext* context, std::chrono::milliseconds patience) {
  const std::string address = BusAddress();
  if (address.empty()) return nullptr;
  constexpr auto kFlags = static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);
  const GObjectPtr<GCancellable> cancellable(g_cancellable_new());
  const Alarm alarm(context, patience);
  PendingConnection pending;
  g_dbus_connection_new_for_address(address.c_str(), kFlags, nullptr, cancellable.get(), ConnectionMade, &pending);
  while (!pending.isDone) {
    g_main_context_iteration(context, TRUE);
    if (alarm.HasGoneOff()) g_cancellable_cancel(cancellable.get());
  }
  return std::move(pending.connection);
}

// libsecret's own service insists on GLib's shared connection, and follows every change of the keyring: both are set in
// the constructor, and only there can they be set again.
GObject* ConstructOnOwnConnection(GType type, guint count, GObjectConstructParam* properties) {
  auto* parent = G_OBJECT_CLASS(g_type_class_peek(SECRET_TYPE_SERVICE));
  GObject* service = parent->constructor(type, count, properties);
  constexpr auto kFlags = static_cast<GDBusProxyFlags>(G_DBUS_PROXY_FLAGS_DO_NOT_LOAD_PROPERTIES |
                                                       G_DBUS_PROXY_FLAGS_DO_NOT_CONNECT_SIGNALS |
                                                       G_DBUS_PROXY_FLAGS_DO_NOT_AUTO_START_AT_CONSTRUCTION);
  g_object_set(service, "g-bus-type", G_BUS_TYPE_NONE, "g-flags", kFlags, nullptr);
  return service;
}

void InitServiceClass(gpointer serviceClass, gpointer) {
  G_OBJECT_CLASS(serviceClass)->constructor = ConstructOnOwnConnection;
}

GType ServiceOnOwnConnection() {
  static const GType type =
      g_type_register_static_simple(SECRET_TYPE_SERVICE, "TessaroSecretService", sizeof(SecretServiceClass),
                                    InitServiceClass, sizeof(SecretService), nullptr, static_cast<GTypeFlags>(0));
  return type;
}

GObjectPtr<SecretService> OpenService(GDBusConnection* bus, int deadline) {
  gpointer made = g_initable_new(ServiceOnOwnConnection(), nullptr, nullptr, "g-connection", bus, "g-default-timeout",
                                 deadline, nullptr);
  GObjectPtr<SecretService> service(static_cast<SecretService*>(made));
  if (service != nullptr && !secret_service_ensure_session_sync(service.get(), nullptr, nullptr)) service.reset();
  return service;
}

// A service without a display dismisses its own prompts: then there was nobody who could have been asked.
SecretServiceFailure Dismissed() {
  const bool hasDisplay = std::getenv("DISPLAY") != nullptr || std::getenv("WAYLAND_DISPLAY") != nullptr;
  return hasDisplay ? SecretServiceFailure::Dismissed : SecretServiceFailure::Locked;
}

// What is heard on the bus while a prompt is shown.
class PromptOutcome {
 public:
  PromptOutcome(GDBusConnection* bus, const char* path) : bus_(bus) {
    completed_ = g_dbus_connection_signal_subscribe(bus_, kService, kPromptInterface, "Completed", path, nullptr,
                                                    G_DBUS_SIGNAL_FLAGS_NONE, Completed, this, nullptr);
    vanished_ = g_dbus_connection_signal_subscribe(bus_, "org.freedesktop.DBus", "org.freedesktop.DBus",
                                                   "NameOwnerChanged", "/org/freedesktop/DBus", kService,
                                                   G_DBUS_SIGNAL_FLAGS_NONE, Vanished, this, nullptr);
    closed_ = g_signal_connect(bus_, "closed", G_CALLBACK(Closed), this);
  }
  PromptOutcome(const PromptOutcome&) = delete;
  PromptOutcome& operator=(const PromptOutcome&) = delete;
  ~PromptOutcome() {
    g_dbus_connection_signal_unsubscribe(bus_, completed_);
    g_dbus_connection_signal_unsubscribe(bus_, vanished_);
    g_signal_handler_disconnect(bus_, closed_);
  }

  [[nodiscard]] const std::optional<SecretServiceFailure>& Get() const { return outcome_; }

 private:
  static void Completed(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant* arguments,
                        gpointer self) {
    gboolean isDismissed = TRUE;
    if (g_variant_is_of_type(arguments, G_VARIANT_TYPE("(bv)")))
      g_variant_get(arguments, "(bv)", &isDismissed, nullptr);
    static_cast<PromptOutcome*>(self)->outcome_ = isDismissed ? Dismissed() : SecretServiceFailure::None;
  }

  static void Vanished(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*, gpointer self) {
    static_cast<PromptOutcome*>(self)->outcome_ = SecretServiceFailure::Stale;
  }

  static void Closed(GDBusConnection*, gboolean, GError*, gpointer self) {
    static_cast<PromptOutcome*>(self)->outcome_ = SecretServiceFailure::Stale;
  }

  GDBusConnection* bus_;
  guint completed_;
  guint vanished_;
  gulong closed_;
  std::optional<SecretServiceFailure> outcome_;
};

struct RemoteError {
  std::string_view name;
  SecretServiceFailure failure;
};

constexpr RemoteError kRemoteErrors[] = {
    {"org.freedesktop.Secret.Error.IsLocked", SecretServiceFailure::Locked},
    {"org.freedesktop.Secret.Error.NoSession", SecretServiceFailure::Stale},
    {"org.freedesktop.Secret.Error.NoSuchObject", SecretServiceFailure::UnknownObject},
    {"org.freedesktop.DBus.Error.UnknownObject", SecretServiceFailure::UnknownObject},
    {"org.freedesktop.DBus.Error.UnknownMethod", SecretServiceFailure::UnknownObject},
    {"org.freedesktop.DBus.Error.ServiceUnknown", SecretServiceFailure::Stale},
    {"org.freedesktop.DBus.Error.NameHasNoOwner", SecretServiceFailure::Stale},
    {"org.freedesktop.DBus.Error.NoReply", SecretServiceFailure::Stale},
    {"org.freedesktop.DBus.Error.Disconnected", SecretServiceFailure::Stale},
    {"org.freedesktop.DBus.Error.Timeout", SecretServiceFailure::NoAnswer},
    {"org.freedesktop.DBus.Error.TimedOut", SecretServiceFailure::NoAnswer},
    {"org.freedesktop.DBus.Error.AccessDenied", SecretServiceFailure::Refused},
};

SecretServiceFailure FailureOf(const GError& error) {
  if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT)) return SecretServiceFailure::NoAnswer;
  const GTextPtr name(g_dbus_error_get_remote_error(&error));
  // Without a name it comes from this side of the bus, which fails only when the connection does.
  if (name == nullptr) return error.domain == G_IO_ERROR ? SecretServiceFailure::Stale : SecretServiceFailure::Other;
  const auto* known = std::find_if(std::begin(kRemoteErrors), std::end(kRemoteErrors),
                                   [&](const RemoteError& remote) { return remote.name == name.get(); });
  return known != std::end(kRemoteErrors) ? known->failure : SecretServiceFailure::Other;
}

template <typename Finish>
SecretServiceReply ReplyOf(const Finish& finish) {
  GError* raised = nullptr;
  GVariantPtr value(finish(&raised));
  const GErrorPtr error(raised);
  return {std::move(value), error ? FailureOf(*error) : SecretServiceFailure::None};
}

}  // namespace

void Patience::DidNotAnswer() { left_ = std::max(left_ / 2, std::min(whole_, kLeastPatience)); }

std::unique_ptr<SecretServiceClient> SecretServiceClient::Connect(Patience& patience,
                                                                  std::chrono::milliseconds forThePerson) {
  std::unique_ptr<SecretServiceClient> client(new SecretServiceClient(patience, forThePerson));
  const ContextScope scope(client->context_.get());
  const auto start = std::chrono::steady_clock::now();
  client->bus_ = ConnectToBus(client->context_.get(), patience.Left());
  if (client->bus_ != nullptr) client->service_ = OpenService(client->bus_.get(), client->Deadline());
  if (client->service_ != nullptr) return client;
  // Where there is nobody, that is known at once.
  if (std::chrono::steady_clock::now() - start >= patience.Left()) patience.DidNotAnswer();
  return nullptr;
}

SecretServiceClient::SecretServiceClient(Patience& patience, std::chrono::milliseconds forThePerson)
    : context_(g_main_context_new()), patience_(patience), forThePerson_(forThePerson) {}

SecretServiceReply SecretServiceClient::Heard(SecretServiceReply reply) {
  if (reply.failure == SecretServiceFailure::NoAnswer) {
    patience_.DidNotAnswer();
  } else {
    patience_.DidAnswer();
  }
  return reply;
}

SecretServiceReply SecretServiceClient::Call(const char* path, const char* interface, const char* method,
                                             GVariant* arguments, const char* type) {
  return Heard(ReplyOf([&](GError** error) {
    return g_dbus_connection_call_sync(bus_.get(), kService, path, interface, method, arguments, G_VARIANT_TYPE(type),
                                       G_DBUS_CALL_FLAGS_NONE, Deadline(), nullptr, error);
  }));
}

std::vector<SecretServiceReply> SecretServiceClient::CallEach(std::span<const std::string> paths, const char* interface,
                                                              const char* method,
                                                              const std::function<GVariant*()>& arguments,
                                                              const char* type) {
  struct Pending {
    SecretServiceReply reply;
    std::size_t* waiting;
  };
  const ContextScope scope(context_.get());
  std::size_t waiting = 0;
  std::vector<Pending> pending(paths.size());
  // Each call ends at its own deadline, if not before.
  const auto turnUntilWaitingFor = [&](std::size_t most) {
    while (waiting > most) g_main_context_iteration(context_.get(), TRUE);
  };
  for (std::size_t i = 0; i < paths.size(); ++i) {
    turnUntilWaitingFor(kMostCallsAtOnce - 1);
    pending[i].waiting = &waiting;
    ++waiting;
    g_dbus_connection_call(
        bus_.get(), kService, paths[i].c_str(), interface, method, arguments(), G_VARIANT_TYPE(type),
        G_DBUS_CALL_FLAGS_NONE, Deadline(), nullptr,
        [](GObject* bus, GAsyncResult* result, gpointer data) {
          auto& answered = *static_cast<Pending*>(data);
          answered.reply = ReplyOf(
              [&](GError** error) { return g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, error); });
          --*answered.waiting;
        },
        &pending[i]);
  }
  turnUntilWaitingFor(0);
  std::vector<SecretServiceReply> replies;
  replies.reserve(pending.size());
  for (Pending& answered : pending) replies.push_back(Heard(std::move(answered.reply)));
  return replies;
}

SecretServiceFailure SecretServiceClient::Prompt(const char* path) {
  const ContextScope scope(context_.get());
  const Alarm alarm(context_.get(), forThePerson_);
  const PromptOutcome outcome(bus_.get(), path);
  const auto shown = Call(path, kPromptInterface, "Prompt", g_variant_new("(s)", ""), "()");
  if (!shown) return shown.failure;
  while (!outcome.Get() && !alarm.HasGoneOff()) g_main_context_iteration(context_.get(), TRUE);
  if (outcome.Get()) return *outcome.Get();
  static_cast<void>(Call(path, kPromptInterface, "Dismiss", nullptr, "()"));
  return SecretServiceFailure::Locked;
}

GVariantPtr SecretServiceClient::Encode(const Secret& secret) {
  const std::string_view bytes = secret.View();
  SecretValue* value = secret_value_new(bytes.data(), static_cast<gssize>(bytes.size()), "text/plain");
  GVariantPtr encoded(g_variant_ref_sink(secret_service_encode_dbus_secret(service_.get(), value)));
  secret_value_unref(value);
  return encoded;
}

std::optional<Secret> SecretServiceClient::Decode(GVariant* encoded) {
  SecretValue* value = secret_service_decode_dbus_secret(service_.get(), encoded);
  if (value == nullptr) return std::nullopt;
  gsize size = 0;
  const char* bytes = secret_value_get(value, &size);
  std::optional<Secret> secret(std::in_place, std::string_view(bytes, size));
  secret_value_unref(value);
  return secret;
}

}  // namespace tessaro::platform
