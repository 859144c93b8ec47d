#include "Platform/SecretStore.h"

#include <algorithm>

#include "Platform/Linux/Keyring/SecretServiceClient.h"

namespace tessaro::platform {

namespace {

constexpr char kServicePath[] = "/org/freedesktop/secrets";
constexpr char kDefaultCollection[] = "/org/freedesktop/secrets/aliases/default";
constexpr char kService[] = "org.freedesktop.Secret.Service";
constexpr char kCollection[] = "org.freedesktop.Secret.Collection";
constexpr char kItem[] = "org.freedesktop.Secret.Item";
constexpr char kProperties[] = "org.freedesktop.DBus.Properties";
constexpr char kNoPrompt[] = "/";

// The bus takes no text with a NUL character.
bool IsBusText(std::string_view text) { return text.find('\0') == std::string_view::npos; }

GVariant* Attributes(std::string_view service, std::optional<std::string_view> account) {
  GVariantBuilder attributes;
  g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
  g_variant_builder_add(&attributes, "{ss}", "service", std::string(service).c_str());
  if (account) g_variant_builder_add(&attributes, "{ss}", "account", std::string(*account).c_str());
  return g_variant_builder_end(&attributes);
}

// A keychain shows an item that has no label under the name of its service.
GVariant* ItemProperties(std::string_view service, std::string_view account) {
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Label",
                        g_variant_new_string(std::string(service).c_str()));
  g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Item.Attributes", Attributes(service, account));
  return g_variant_builder_end(&properties);
}

GVariant* CollectionProperties() {
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&properties, "{sv}", "org.freedesktop.Secret.Collection.Label",
                        g_variant_new_string("Default keyring"));
  return g_variant_builder_end(&properties);
}

GVariant* PathList(const char* path) { return g_variant_new_objv(&path, 1); }

void AppendPaths(GVariant* paths, std::vector<SecretItem>& items) {
  GVariantIter each;
  g_variant_iter_init(&each, paths);
  const char* path = nullptr;
  while (g_variant_iter_next(&each, "&o", &path)) items.push_back({path});
}

// Those that are open come first.
std::vector<SecretItem> ItemsOf(GVariant* searchReply) {
  std::vector<SecretItem> items;
  for (gsize list : {0, 1}) {
    const GVariantPtr paths(g_variant_get_child_value(searchReply, list));
    AppendPaths(paths.get(), items);
  }
  return items;
}

// The value of a property.
GVariantPtr Unboxed(const SecretServiceReply& reply) {
  const GVariantPtr boxed(g_variant_get_child_value(reply.value.get(), 0));
  return GVariantPtr(g_variant_get_variant(boxed.get()));
}

std::optional<std::string> AccountOf(const SecretServiceReply& reply) {
  if (!reply) return std::nullopt;
  const GVariantPtr attributes = Unboxed(reply);
  const char* account = nullptr;
  if (!g_variant_is_of_type(attributes.get(), G_VARIANT_TYPE("a{ss}")) ||
      !g_variant_lookup(attributes.get(), "account", "&s", &account)) {
    return std::nullopt;
  }
  return account;
}

SecretStatus StatusOf(SecretServiceFailure failure) {
  switch (failure) {
    case SecretServiceFailure::None:
      return SecretStatus::Success;
    case SecretServiceFailure::NoService:
    case SecretServiceFailure::Stale:
    case SecretServiceFailure::NoAnswer:
      return SecretStatus::NotAvailable;
    case SecretServiceFailure::Locked:
      return SecretStatus::InteractionNotAllowed;
    case SecretServiceFailure::Dismissed:
      return SecretStatus::UserCancelled;
    case SecretServiceFailure::UnknownObject:
      return SecretStatus::ItemNotFound;
    case SecretServiceFailure::Refused:
      return SecretStatus::AuthorizationFailed;
    case SecretServiceFailure::Other:
      break;
  }
  return SecretStatus::InternalComponent;
}

}  // namespace

class SecretStore::Body {
 public:
  explicit Body(Deadlines deadlines) : patience_(deadlines.answer), forThePerson_(deadlines.person) {}

  SecretResult<std::vector<SecretItem>> Search(std::string_view service, std::optional<std::string_view> account) {
    const auto reply = CallAgainIfStale([&](SecretServiceClient& client) {
      return client.Call(kServicePath, kService, "SearchItems", g_variant_new("(@a{ss})", Attributes(service, account)),
                         "(aoao)");
    });
    if (!reply) return {StatusOf(reply.failure)};
    auto items = ItemsOf(reply.value.get());
    if (items.empty()) return {SecretStatus::ItemNotFound};
    return {SecretStatus::Success, std::move(items)};
  }

  SecretResult<std::vector<SecretItem>> Find(std::string_view service, std::optional<std::string_view> account) {
    auto items = Search(service, account);
    // A store that is closed may not know what it holds.
    if (items.status == SecretStatus::ItemNotFound && IsDefaultCollectionLocked()) {
      if (const auto failure = Unlock(kDefaultCollection); failure != Failure::None) return {StatusOf(failure)};
      return Search(service, account);
    }
    return items;
  }

  SecretResult<Secret> Read(const SecretItem& item) {
    const char* path = item.reference.c_str();
    const auto open = CallAgainIfStale([&](SecretServiceClient& client) {
      return client.Call(kServicePath, kService, "GetSecrets",
                         g_variant_new("(@aoo)", PathList(path), client.SessionPath()), "(a{o(oayays)})");
    });
    if (!open) return {StatusOf(open.failure)};
    const GVariantPtr secrets(g_variant_get_child_value(open.value.get(), 0));
    if (g_variant_n_children(secrets.get()) > 0) {
      const GVariantPtr entry(g_variant_get_child_value(secrets.get(), 0));
      return Decoded(GVariantPtr(g_variant_get_child_value(entry.get(), 1)));
    }
    // The question above is the quicker one, but leaves out what is locked or gone without a word.
    const auto reply = CallUnlocked(path, [&](SecretServiceClient& client) {
      return client.Call(path, kItem, "GetSecret", g_variant_new("(o)", client.SessionPath()), "((oayays))");
    });
    if (!reply) return {StatusOf(reply.failure)};
    return Decoded(GVariantPtr(g_variant_get_child_value(reply.value.get(), 0)));
  }

  SecretResult<std::vector<std::optional<std::string>>> Accounts(std::span<const SecretItem> items) {
    if (!IsConnected()) return {SecretStatus::NotAvailable};
    std::vector<std::string> paths;
    for (const SecretItem& item : items) paths.push_back(item.reference);
    const auto question = [] { return g_variant_new("(ss)", kItem, "Attributes"); };
    const auto replies = client_->CallEach(paths, kProperties, "Get", question, "(v)");
    std::vector<std::optional<std::string>> accounts;
    for (const auto& reply : replies) {
      const bool isGone = reply.failure == Failure::UnknownObject;
      if (!reply && !isGone) return {StatusOf(reply.failure)};
      accounts.push_back(AccountOf(reply));
    }
    return {SecretStatus::Success, std::move(accounts)};
  }

  SecretStatus Add(std::string_view service, std::string_view account, const Secret& secret) {
    const auto create = [&](SecretServiceClient& client) {
      const GVariantPtr encoded = client.Encode(secret);
      return client.Call(kDefaultCollection, kCollection, "CreateItem",
                         g_variant_new("(@a{sv}@(oayays)b)", ItemProperties(service, account), encoded.get(), TRUE),
                         "(oo)");
    };
    auto reply = CallUnlocked(kDefaultCollection, create);
    if (reply.failure == Failure::UnknownObject) {
      if (const auto failure = CreateDefaultCollection(); failure != Failure::None) return StatusOf(failure);
      reply = CallUnlocked(kDefaultCollection, create);
    }
    if (reply.failure == Failure::UnknownObject) return SecretStatus::InternalComponent;
    return StatusOf(reply ? PromptIfAsked(reply, 1) : reply.failure);
  }

  SecretStatus Replace(const SecretItem& item, const Secret& secret) {
    const char* path = item.reference.c_str();
    const auto reply = CallUnlocked(path, [&](SecretServiceClient& client) {
      const GVariantPtr encoded = client.Encode(secret);
      return client.Call(path, kItem, "SetSecret", g_variant_new("(@(oayays))", encoded.get()), "()");
    });
    return StatusOf(reply.failure);
  }

  SecretStatus Remove(const SecretItem& item) {
    const char* path = item.reference.c_str();
    const auto reply = CallUnlocked(
        path, [&](SecretServiceClient& client) { return client.Call(path, kItem, "Delete", nullptr, "(o)"); });
    return StatusOf(reply ? PromptIfAsked(reply, 0) : reply.failure);
  }

  void Close() { client_.reset(); }

 private:
  using Failure = SecretServiceFailure;

  bool IsConnected() {
    if (client_ == nullptr) client_ = SecretServiceClient::Connect(patience_, forThePerson_);
    return client_ != nullptr;
  }

  // The bus and the service may have been started anew since the last call.
  template <typename Operation>
  SecretServiceReply CallAgainIfStale(const Operation& operation) {
    SecretServiceReply reply;
    for (int attempt = 0; attempt < 2; ++attempt) {
      if (!IsConnected()) return {nullptr, Failure::NoService};
      reply = operation(*client_);
      if (reply.failure != Failure::Stale) break;
      client_.reset();
    }
    return reply;
  }

  // Opens `path` when it turns out to be locked.
  template <typename Operation>
  SecretServiceReply CallUnlocked(const char* path, const Operation& operation) {
    auto reply = CallAgainIfStale(operation);
    if (reply.failure != Failure::Locked) return reply;
    if (const auto failure = Unlock(path); failure != Failure::None) return {nullptr, failure};
    return CallAgainIfStale(operation);
  }

  SecretResult<Secret> Decoded(const GVariantPtr& encoded) {
    auto secret = client_->Decode(encoded.get());
    if (!secret) return {SecretStatus::Decode};
    return {SecretStatus::Success, std::move(*secret)};
  }

  bool IsDefaultCollectionLocked() {
    const auto reply =
        client_->Call(kDefaultCollection, kProperties, "Get", g_variant_new("(ss)", kCollection, "Locked"), "(v)");
    if (!reply) return false;
    const GVariantPtr isLocked = Unboxed(reply);
    return g_variant_is_of_type(isLocked.get(), G_VARIANT_TYPE_BOOLEAN) && g_variant_get_boolean(isLocked.get());
  }

  Failure Unlock(const char* path) {
    const auto reply = client_->Call(kServicePath, kService, "Unlock", g_variant_new("(@ao)", PathList(path)), "(aoo)");
    return reply ? PromptIfAsked(reply, 1) : reply.failure;
  }

  Failure CreateDefaultCollection() {
    const auto reply = client_->Call(kServicePath, kService, "CreateCollection",
                                     g_variant_new("(@a{sv}s)", CollectionProperties(), "default"), "(oo)");
    return reply ? PromptIfAsked(reply, 1) : reply.failure;
  }

  // `place` is where the reply has the path of the prompt.
  Failure PromptIfAsked(const SecretServiceReply& reply, gsize place) {
    const GVariantPtr prompt(g_variant_get_child_value(reply.value.get(), place));
    const char* path = g_variant_get_string(prompt.get(), nullptr);
    return std::string_view(path) == kNoPrompt ? Failure::None : client_->Prompt(path);
  }

  Patience patience_;
  std::chrono::milliseconds forThePerson_;
  std::unique_ptr<SecretServiceClient> client_;
};

SecretStore::SecretStore(Deadlines deadlines) : body_(std::make_unique<Body>(deadlines)) {}

SecretStore::~SecretStore() = default;

SecretStore& SecretStore::Shared() {
  static Forever<SecretStore> store(Deadlines{});
  return *store;
}

SecretResult<std::vector<SecretItem>> SecretStore::Find(std::string_view service,
                                                        std::optional<std::string_view> account) noexcept {
  if (!IsBusText(service) || (account && !IsBusText(*account))) return {SecretStatus::Parameter};
  return body_->Find(service, account);
}

SecretResult<std::vector<SecretItem>> SecretStore::FindVisible(std::string_view service,
                                                               std::string_view account) noexcept {
  if (!IsBusText(service) || !IsBusText(account)) return {SecretStatus::Parameter};
  return body_->Search(service, account);
}

SecretResult<Secret> SecretStore::Read(const SecretItem& item) noexcept { return body_->Read(item); }

SecretResult<std::vector<std::optional<std::string>>> SecretStore::Accounts(
    std::span<const SecretItem> items) noexcept {
  return body_->Accounts(items);
}

SecretStatus SecretStore::Add(std::string_view service, std::string_view account, const Secret& secret) noexcept {
  if (!IsBusText(service) || !IsBusText(account)) return SecretStatus::Parameter;
  return body_->Add(service, account, secret);
}

SecretStatus SecretStore::Replace(const SecretItem& item, const Secret& secret) noexcept {
  return body_->Replace(item, secret);
}

SecretStatus SecretStore::Remove(const SecretItem& item) noexcept { return body_->Remove(item); }

void SecretStore::Close() noexcept { body_->Close(); }

std::string_view Message(SecretStatus status) noexcept {
  switch (status) {
    case SecretStatus::Success:
      return "No error.";
    case SecretStatus::Parameter:
      return "A text that the secret service can't take.";
    case SecretStatus::UserCancelled:
      return "The person dismissed the prompt.";
    case SecretStatus::NotAvailable:
      return "There is no secret service, or it does not answer.";
    case SecretStatus::AuthorizationFailed:
      return "The secret service refuses this application.";
    case SecretStatus::ItemNotFound:
      return "There is no such item.";
    case SecretStatus::InteractionNotAllowed:
      return "The keyring is locked, and nobody opens it.";
    case SecretStatus::Decode:
      return "The stored bytes can't be decoded.";
    case SecretStatus::InternalComponent:
      break;
  }
  return "The secret service failed.";
}

}  // namespace tessaro::platform
