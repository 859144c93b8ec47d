#include "Platform/SecretStore.h"

#include <utility>

#include "Base/Lifetime.h"
#include "Platform/Linux/Keyring/SecretService.h"

namespace tessaro::platform {

namespace {

constexpr char kServicePath[] = "/org/freedesktop/secrets";
constexpr char kDefaultCollection[] = "/org/freedesktop/secrets/aliases/default";
constexpr char kService[] = "org.freedesktop.Secret.Service";
constexpr char kCollection[] = "org.freedesktop.Secret.Collection";
constexpr char kItem[] = "org.freedesktop.Secret.Item";
constexpr char kNoPrompt[] = "/";

using Reply = SecretServiceReply;
using Session = SecretServiceSession;

// The bus takes no text with a NUL character.
bool IsBusText(std::string_view text) { return text.find('\0') == std::string_view::npos; }

GVariant* Attributes(std::string_view service, std::optional<std::string_view> account) {
  GVariantBuilder attributes;
  g_variant_builder_init(&attributes, G_VARIANT_TYPE("a{ss}"));
  g_variant_builder_add(&attributes, "{ss}", "service", std::string(service).c_str());
  if (account) g_variant_builder_add(&attributes, "{ss}", "account", std::string(*account).c_str());
  return g_variant_builder_end(&attributes);
}

// The properties of a new item or collection; `attributes` may be null.
GVariant* Properties(const std::string& interface, std::string_view label, GVariant* attributes) {
  GVariantBuilder properties;
  g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
  g_variant_builder_add(&properties, "{sv}", (interface + ".Label").c_str(),
                        g_variant_new_string(std::string(label).c_str()));
  if (attributes != nullptr) {
    g_variant_builder_add(&properties, "{sv}", (interface + ".Attributes").c_str(), attributes);
  }
  return g_variant_builder_end(&properties);
}

GVariant* PathList(const std::vector<std::string>& paths) {
  GVariantBuilder list;
  g_variant_builder_init(&list, G_VARIANT_TYPE("ao"));
  for (const std::string& path : paths) g_variant_builder_add(&list, "o", path.c_str());
  return g_variant_builder_end(&list);
}

// Unlocked items come first.
std::vector<SecretItem> ItemsOf(GVariant* searchReply) {
  std::vector<SecretItem> items;
  for (gsize list : {0, 1}) {
    const GVariantPtr paths(g_variant_get_child_value(searchReply, list));
    GVariantIter each;
    g_variant_iter_init(&each, paths.get());
    const char* path = nullptr;
    while (g_variant_iter_next(&each, "&o", &path)) items.push_back({path});
  }
  return items;
}

// The value of a property; null without a reply.
GVariantPtr PropertyOf(const Reply& reply) {
  if (!reply) return nullptr;
  const GVariantPtr boxed(g_variant_get_child_value(reply.value.get(), 0));
  return GVariantPtr(g_variant_get_variant(boxed.get()));
}

std::optional<std::string> AccountOf(const Reply& reply) {
  const GVariantPtr attributes = PropertyOf(reply);
  const char* account = nullptr;
  if (!attributes || !g_variant_is_of_type(attributes.get(), G_VARIANT_TYPE("a{ss}")) ||
      !g_variant_lookup(attributes.get(), "account", "&s", &account)) {
    return std::nullopt;
  }
  return account;
}

// The keyring of the desktop (org.freedesktop.secrets): gnome-keyring, KWallet, KeePassXC and others.
class Keyring final : public SecretStore {
 public:
  static constexpr EndStage kEnd = EndStage::Services;

  explicit Keyring(Deadlines deadlines) : replyTimeout_(deadlines.reply), userTimeout_(deadlines.user) {}

  SecretResult<std::vector<SecretItem>> Find(std::string_view service,
                                             std::optional<std::string_view> account) noexcept override;
  SecretResult<std::vector<SecretItem>> FindVisible(std::string_view service,
                                                    std::string_view account) noexcept override;
  SecretResult<Secret> Read(const SecretItem& item) noexcept override;
  SecretResult<std::vector<std::optional<std::string>>> Accounts(std::span<const SecretItem> items) noexcept override;
  SecretStatus Add(std::string_view service, std::string_view account, const Secret& secret) noexcept override;
  SecretStatus Replace(const SecretItem& item, const Secret& secret) noexcept override;
  SecretStatus Remove(const SecretItem& item) noexcept override;
  void Close() noexcept { session_.reset(); }

 private:
  SecretResult<std::vector<SecretItem>> Search(std::string_view service, std::optional<std::string_view> account);
  SecretResult<Secret> Decoded(GVariant* encoded);
  bool IsDefaultCollectionLocked();
  SecretStatus Unlock(const std::vector<std::string>& paths);
  SecretStatus CreateDefaultCollection();
  SecretStatus PromptIfAsked(const Reply& reply, gsize position);
  bool IsConnected();

  // Calls again when the bus or the service has been restarted since the last call.
  template <typename Operation>
  Reply Call(const Operation& operation);

  // Unlocks `path` when it turns out to be locked.
  template <typename Operation>
  Reply CallUnlocked(const std::string& path, const Operation& operation);

  ReplyTimeout replyTimeout_;
  std::chrono::milliseconds userTimeout_;
  std::unique_ptr<Session> session_;
};

bool Keyring::IsConnected() {
  if (!session_) session_ = Session::Open(replyTimeout_);
  return session_ != nullptr;
}

template <typename Operation>
Reply Keyring::Call(const Operation& operation) {
  Reply reply{nullptr, SecretStatus::NotAvailable};
  for (int attempt = 0; attempt < 2 && IsConnected(); ++attempt) {
    reply = operation(*session_);
    if (!reply.isStale) break;
    session_.reset();
  }
  return reply;
}

template <typename Operation>
Reply Keyring::CallUnlocked(const std::string& path, const Operation& operation) {
  Reply reply = Call(operation);
  if (reply.status != SecretStatus::InteractionNotAllowed) return reply;
  if (const auto status = Unlock({path}); status != SecretStatus::Success) return {nullptr, status};
  return Call(operation);
}

SecretResult<std::vector<SecretItem>> Keyring::Search(std::string_view service,
                                                      std::optional<std::string_view> account) {
  if (!IsBusText(service) || (account && !IsBusText(*account))) return {SecretStatus::Parameter};
  const Reply reply = Call([&](Session& session) {
    return session.Call(kServicePath, kService, "SearchItems", g_variant_new("(@a{ss})", Attributes(service, account)),
                        "(aoao)");
  });
  if (!reply) return {reply.status};
  auto items = ItemsOf(reply.value.get());
  if (items.empty()) return {SecretStatus::ItemNotFound};
  return {SecretStatus::Success, std::move(items)};
}

SecretResult<std::vector<SecretItem>> Keyring::Find(std::string_view service,
                                                    std::optional<std::string_view> account) noexcept {
  auto items = Search(service, account);
  // A locked collection may hide its items.
  if (items.status != SecretStatus::ItemNotFound || !IsDefaultCollectionLocked()) return items;
  if (const auto status = Unlock({kDefaultCollection}); status != SecretStatus::Success) return {status};
  return Search(service, account);
}

SecretResult<std::vector<SecretItem>> Keyring::FindVisible(std::string_view service,
                                                           std::string_view account) noexcept {
  return Search(service, account);
}

SecretResult<Secret> Keyring::Read(const SecretItem& item) noexcept {
  const Reply secrets = Call([&](Session& session) {
    return session.Call(kServicePath, kService, "GetSecrets",
                        g_variant_new("(@aoo)", PathList({item.reference}), session.Path()), "(a{o(oayays)})");
  });
  if (!secrets) return {secrets.status};
  const GVariantPtr all(g_variant_get_child_value(secrets.value.get(), 0));
  if (g_variant_n_children(all.get()) > 0) {
    const GVariantPtr first(g_variant_get_child_value(all.get(), 0));
    return Decoded(GVariantPtr(g_variant_get_child_value(first.get(), 1)).get());
  }
  // GetSecrets is quicker, but silently leaves out items that are locked or gone.
  const Reply reply = CallUnlocked(item.reference, [&](Session& session) {
    return session.Call(item.reference.c_str(), kItem, "GetSecret", g_variant_new("(o)", session.Path()), "((oayays))");
  });
  if (!reply) return {reply.status};
  return Decoded(GVariantPtr(g_variant_get_child_value(reply.value.get(), 0)).get());
}

SecretResult<Secret> Keyring::Decoded(GVariant* encoded) {
  auto secret = session_->Decode(encoded);
  if (!secret) return {SecretStatus::Decode};
  return {SecretStatus::Success, std::move(*secret)};
}

SecretResult<std::vector<std::optional<std::string>>> Keyring::Accounts(std::span<const SecretItem> items) noexcept {
  if (!IsConnected()) return {SecretStatus::NotAvailable};
  std::vector<std::string> paths;
  for (const SecretItem& item : items) paths.push_back(item.reference);
  std::vector<std::optional<std::string>> accounts;
  std::vector<std::string> nameless;
  for (const bool isRetry : {false, true}) {
    accounts.clear();
    const auto replies = session_->GetEach(paths, "Attributes");
    for (std::size_t i = 0; i < replies.size(); ++i) {
      const bool isGone = replies[i].status == SecretStatus::ItemNotFound;
      if (!replies[i] && !isGone) return {replies[i].status};
      accounts.push_back(AccountOf(replies[i]));
      if (!isGone && !accounts.back()) nameless.push_back(paths[i]);
    }
    if (nameless.empty() || isRetry) break;
    // The attributes of a collection that has not been unlocked in this login can't be read.
    if (const auto status = Unlock(std::exchange(nameless, {})); status != SecretStatus::Success) return {status};
    if (!IsConnected()) return {SecretStatus::NotAvailable};
  }
  return {SecretStatus::Success, std::move(accounts)};
}

SecretStatus Keyring::Add(std::string_view service, std::string_view account, const Secret& secret) noexcept {
  if (!IsBusText(service) || !IsBusText(account)) return SecretStatus::Parameter;
  const auto create = [&](Session& session) {
    const GVariantPtr encoded = session.Encode(secret);
    // A keychain labels an item that has no label of its own with the name of its service.
    GVariant* properties = Properties(kItem, service, Attributes(service, account));
    return session.Call(kDefaultCollection, kCollection, "CreateItem",
                        g_variant_new("(@a{sv}@(oayays)b)", properties, encoded.get(), TRUE), "(oo)");
  };
  Reply reply = CallUnlocked(kDefaultCollection, create);
  if (reply.status == SecretStatus::ItemNotFound) {
    if (const auto status = CreateDefaultCollection(); status != SecretStatus::Success) return status;
    reply = CallUnlocked(kDefaultCollection, create);
  }
  if (reply.status == SecretStatus::ItemNotFound) return SecretStatus::InternalComponent;
  return PromptIfAsked(reply, 1);
}

SecretStatus Keyring::Replace(const SecretItem& item, const Secret& secret) noexcept {
  return CallUnlocked(item.reference,
                      [&](Session& session) {
                        const GVariantPtr encoded = session.Encode(secret);
                        return session.Call(item.reference.c_str(), kItem, "SetSecret",
                                            g_variant_new("(@(oayays))", encoded.get()), "()");
                      })
      .status;
}

SecretStatus Keyring::Remove(const SecretItem& item) noexcept {
  const Reply reply = CallUnlocked(item.reference, [&](Session& session) {
    return session.Call(item.reference.c_str(), kItem, "Delete", nullptr, "(o)");
  });
  return PromptIfAsked(reply, 0);
}

bool Keyring::IsDefaultCollectionLocked() {
  const Reply reply = Call([](Session& session) {
    return session.Call(kDefaultCollection, "org.freedesktop.DBus.Properties", "Get",
                        g_variant_new("(ss)", kCollection, "Locked"), "(v)");
  });
  const GVariantPtr isLocked = PropertyOf(reply);
  return isLocked && g_variant_is_of_type(isLocked.get(), G_VARIANT_TYPE_BOOLEAN) &&
         g_variant_get_boolean(isLocked.get());
}

SecretStatus Keyring::Unlock(const std::vector<std::string>& paths) {
  return PromptIfAsked(Call([&](Session& session) {
                         return session.Call(kServicePath, kService, "Unlock", g_variant_new("(@ao)", PathList(paths)),
                                             "(aoo)");
                       }),
                       1);
}

SecretStatus Keyring::CreateDefaultCollection() {
  return PromptIfAsked(Call([](Session& session) {
                         GVariant* properties = Properties(kCollection, "Default keyring", nullptr);
                         return session.Call(kServicePath, kService, "CreateCollection",
                                             g_variant_new("(@a{sv}s)", properties, "default"), "(oo)");
                       }),
                       1);
}

// `position` is where the reply has the path of the prompt.
SecretStatus Keyring::PromptIfAsked(const Reply& reply, gsize position) {
  if (!reply) return reply.status;
  const GVariantPtr prompt(g_variant_get_child_value(reply.value.get(), position));
  const char* path = g_variant_get_string(prompt.get(), nullptr);
  return std::string_view(path) == kNoPrompt ? SecretStatus::Success : session_->Prompt(path, userTimeout_);
}

}  // namespace

std::unique_ptr<SecretStore> SecretStore::WithDeadlines(Deadlines deadlines) {
  return std::make_unique<Keyring>(deadlines);
}

SecretStore& SecretStore::Shared() {
  static Forever<Keyring> store(Deadlines{});
  return *store;
}

std::string_view Message(SecretStatus status) noexcept {
  switch (status) {
    case SecretStatus::Success:
      return "No error.";
    case SecretStatus::Parameter:
      return "The secret service does not accept texts with a NUL character.";
    case SecretStatus::UserCancelled:
      return "The user dismissed the prompt.";
    case SecretStatus::NotAvailable:
      return "The secret service is unavailable or did not reply in time.";
    case SecretStatus::AuthorizationFailed:
      return "The secret service refused this application.";
    case SecretStatus::ItemNotFound:
      return "The item does not exist.";
    case SecretStatus::InteractionNotAllowed:
      return "The keyring is locked and was not unlocked in time.";
    case SecretStatus::Decode:
      return "The stored bytes are malformed.";
    case SecretStatus::InternalComponent:
      break;
  }
  return "The secret service failed.";
}

}  // namespace tessaro::platform
