#include "Platform/SecretStore.h"

#include <utility>

#include "Base/TextPieces.h"
#include "Platform/Linux/Keyring/SecretService.h"

namespace tessaro::platform {

namespace {

constexpr char kServicePath[] = "/org/freedesktop/secrets";
constexpr char kDefaultCollection[] = "/org/freedesktop/secrets/aliases/default";
constexpr char kService[] = "org.freedesktop.Secret.Service";
constexpr char kCollection[] = "org.freedesktop.Secret.Collection";
constexpr char kItem[] = "org.freedesktop.Secret.Item";
constexpr char kNoPrompt[] = "/";

using Session = SecretServiceSession;
using Reply = Session::Reply;

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
SecretStore::Items ItemsOf(GVariant* searchReply) {
  SecretStore::Items items;
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
  const GVariantPtr boxed(g_variant_get_child_value(reply->get(), 0));
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

}  // namespace

// The keyring of the desktop (org.freedesktop.secrets): gnome-keyring, KWallet, KeePassXC and others.
struct SecretStore::Body {
  explicit Body(Deadlines deadlines) : replyTimeout(deadlines.reply), userTimeout(deadlines.user) {}

  Result<Items> Search(std::string_view service, std::optional<std::string_view> account) {
    // The bus takes no text with a NUL character.
    if (HasNul(service) || HasNul(account.value_or(""))) return FailWith(SecretFailure::kParameter);
    const Reply reply = Call([&](Session& open) {
      return open.Call(kServicePath, kService, "SearchItems", g_variant_new("(@a{ss})", Attributes(service, account)),
                       "(aoao)");
    });
    if (!reply) return tl::unexpected(reply.error());
    Items items = ItemsOf(reply->get());
    if (items.empty()) return FailWith(SecretFailure::kItemNotFound);
    return items;
  }

  bool IsDefaultCollectionLocked() {
    const GVariantPtr isLocked = PropertyOf(Call([](Session& open) {
      return open.Call(kDefaultCollection, "org.freedesktop.DBus.Properties", "Get",
                       g_variant_new("(ss)", kCollection, "Locked"), "(v)");
    }));
    return isLocked && g_variant_is_of_type(isLocked.get(), G_VARIANT_TYPE_BOOLEAN) &&
           g_variant_get_boolean(isLocked.get());
  }

  Result<void> Unlock(const std::vector<std::string>& paths) {
    const Reply reply = Call([&](Session& open) {
      return open.Call(kServicePath, kService, "Unlock", g_variant_new("(@ao)", PathList(paths)), "(aoo)");
    });
    return PromptIfAsked(reply, 1);
  }

  Result<void> CreateDefaultCollection() {
    const Reply reply = Call([](Session& open) {
      GVariant* properties = Properties(kCollection, "Default keyring", nullptr);
      return open.Call(kServicePath, kService, "CreateCollection", g_variant_new("(@a{sv}s)", properties, "default"),
                       "(oo)");
    });
    return PromptIfAsked(reply, 1);
  }

  // `position` is where the reply has the path of the prompt.
  Result<void> PromptIfAsked(const Reply& reply, gsize position) {
    if (!reply) return tl::unexpected(reply.error());
    const GVariantPtr prompt(g_variant_get_child_value(reply->get(), position));
    const char* path = g_variant_get_string(prompt.get(), nullptr);
    if (std::string_view(path) == kNoPrompt) return {};
    return session->Prompt(path, userTimeout);
  }

  bool IsConnected() {
    if (!session) session = Session::Open(replyTimeout);
    return session != nullptr;
  }

  // Calls again when the bus or the service has been restarted since the last call.
  template <typename Operation>
  Reply Call(const Operation& operation) {
    Reply reply = FailWith(SecretFailure::kNotAvailable);
    for (int attempt = 0; attempt < 2 && IsConnected(); ++attempt) {
      reply = operation(*session);
      if (!session->IsStale()) break;
      session.reset();
    }
    return reply;
  }

  // Unlocks `path` when it turns out to be locked.
  template <typename Operation>
  Reply CallUnlocked(const std::string& path, const Operation& operation) {
    Reply reply = Call(operation);
    if (reply || reply.error().code != SecretFailure::kInteractionNotAllowed) return reply;
    return Unlock({path}).and_then([&] { return Call(operation); });
  }

  ReplyTimeout replyTimeout;
  std::chrono::milliseconds userTimeout;
  std::unique_ptr<Session> session;
};

SecretStore::SecretStore(Deadlines deadlines) : body_(std::make_unique<Body>(deadlines)) {}

SecretStore::~SecretStore() = default;

Result<SecretStore::Items> SecretStore::Find(std::string_view service,
                                             std::optional<std::string_view> account) noexcept {
  auto items = body_->Search(service, account);
  const bool isMissing = !items && items.error().code == SecretFailure::kItemNotFound;
  // A locked collection may hide its items.
  if (!isMissing || !body_->IsDefaultCollectionLocked()) return items;
  return body_->Unlock({kDefaultCollection}).and_then([&] { return body_->Search(service, account); });
}

Result<SecretStore::Items> SecretStore::FindVisible(std::string_view service, std::string_view account) noexcept {
  return body_->Search(service, account);
}

Result<Secret> SecretStore::Read(const SecretItem& item) noexcept {
  const Reply secrets = body_->Call([&](Session& open) {
    return open.Call(kServicePath, kService, "GetSecrets",
                     g_variant_new("(@aoo)", PathList({item.reference}), open.Path()), "(a{o(oayays)})");
  });
  if (!secrets) return tl::unexpected(secrets.error());
  const GVariantPtr all(g_variant_get_child_value(secrets->get(), 0));
  if (g_variant_n_children(all.get()) > 0) {
    const GVariantPtr first(g_variant_get_child_value(all.get(), 0));
    return body_->session->Decode(GVariantPtr(g_variant_get_child_value(first.get(), 1)).get());
  }
  // GetSecrets is quicker, but silently leaves out items that are locked or gone.
  const Reply reply = body_->CallUnlocked(item.reference, [&](Session& open) {
    return open.Call(item.reference.c_str(), kItem, "GetSecret", g_variant_new("(o)", open.Path()), "((oayays))");
  });
  if (!reply) return tl::unexpected(reply.error());
  return body_->session->Decode(GVariantPtr(g_variant_get_child_value(reply->get(), 0)).get());
}

Result<SecretStore::AccountNames> SecretStore::Accounts(std::span<const SecretItem> items) noexcept {
  std::vector<std::string> paths;
  for (const SecretItem& item : items) paths.push_back(item.reference);
  AccountNames accounts;
  std::vector<std::string> nameless;
  for (const bool isRetry : {false, true}) {
    if (!body_->IsConnected()) return FailWith(SecretFailure::kNotAvailable);
    accounts.clear();
    const auto replies = body_->session->GetEach(paths, "Attributes");
    for (std::size_t i = 0; i < replies.size(); ++i) {
      const bool isGone = !replies[i] && replies[i].error().code == SecretFailure::kItemNotFound;
      if (!replies[i] && !isGone) return tl::unexpected(replies[i].error());
      accounts.push_back(AccountOf(replies[i]));
      if (!isGone && !accounts.back()) nameless.push_back(paths[i]);
    }
    if (nameless.empty() || isRetry) break;
    // The attributes of a collection that has not been unlocked in this login can't be read.
    if (auto unlocked = body_->Unlock(std::exchange(nameless, {})); !unlocked) return tl::unexpected(unlocked.error());
  }
  return accounts;
}

Result<void> SecretStore::Add(std::string_view service, std::string_view account, const Secret& secret) noexcept {
  if (HasNul(service) || HasNul(account)) return FailWith(SecretFailure::kParameter);
  const auto create = [&](Session& open) {
    const GVariantPtr encoded = open.Encode(secret);
    // A keychain labels an item that has no label of its own with the name of its service.
    GVariant* properties = Properties(kItem, service, Attributes(service, account));
    return open.Call(kDefaultCollection, kCollection, "CreateItem",
                     g_variant_new("(@a{sv}@(oayays)b)", properties, encoded.get(), TRUE), "(oo)");
  };
  const auto isMissing = [](const Reply& reply) {
    return !reply && reply.error().code == SecretFailure::kItemNotFound;
  };
  Reply reply = body_->CallUnlocked(kDefaultCollection, create);
  if (isMissing(reply)) {
    if (auto created = body_->CreateDefaultCollection(); !created) return created;
    reply = body_->CallUnlocked(kDefaultCollection, create);
  }
  if (isMissing(reply)) return FailWith(SecretFailure::kInternalComponent);
  return body_->PromptIfAsked(reply, 1);
}

Result<void> SecretStore::Replace(const SecretItem& item, const Secret& secret) noexcept {
  return body_
      ->CallUnlocked(item.reference,
                     [&](Session& open) {
                       const GVariantPtr encoded = open.Encode(secret);
                       return open.Call(item.reference.c_str(), kItem, "SetSecret",
                                        g_variant_new("(@(oayays))", encoded.get()), "()");
                     })
      .map([](const GVariantPtr&) {});
}

Result<void> SecretStore::Remove(const SecretItem& item) noexcept {
  const Reply reply = body_->CallUnlocked(item.reference, [&](Session& open) {
    return open.Call(item.reference.c_str(), kItem, "Delete", nullptr, "(o)");
  });
  return body_->PromptIfAsked(reply, 0);
}

void SecretStore::Close() noexcept { body_->session.reset(); }

}  // namespace tessaro::platform
