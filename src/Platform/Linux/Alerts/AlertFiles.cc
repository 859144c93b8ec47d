#include "Platform/Linux/Alerts/AlertFiles.h"

#include <array>
#include <cmath>
#include <system_error>

#include "Platform/Files.h"
#include "Platform/Linux/Base/GLibOwners.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".alert";
constexpr std::size_t kMostBytes = 16 << 20;
constexpr char kDue[] = "due";
constexpr char kServer[] = "server";
constexpr char kServerId[] = "server-id";

struct TextField {
  const char* name;
  std::optional<std::string> UserNotification::*value;
};

constexpr std::array kTexts = {
    TextField{"identifier", &UserNotification::identifier},
    TextField{"title", &UserNotification::title},
    TextField{"subtitle", &UserNotification::subtitle},
    TextField{"text", &UserNotification::text},
    TextField{"sound", &UserNotification::soundName},
    TextField{"action-title", &UserNotification::actionButtonTitle},
    TextField{"placeholder", &UserNotification::replyPlaceholder},
};

struct Flag {
  const char* name;
  bool UserNotification::*value;
};

constexpr std::array kFlags = {
    Flag{"has-action", &UserNotification::hasActionButton},
    Flag{"has-reply", &UserNotification::hasReplyField},
};

// GLib's strings end at the first NUL character.
GVariant* Bytes(const std::string& text) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, text.data(), text.size(), 1);
}

std::string Serialised(const KeptAlert& kept) {
  GVariantDict fields;
  g_variant_dict_init(&fields, nullptr);
  for (const auto& [name, value] : kTexts) {
    if (kept.alert.*value) g_variant_dict_insert_value(&fields, name, Bytes(*(kept.alert.*value)));
  }
  for (const auto& [name, value] : kFlags) {
    g_variant_dict_insert_value(&fields, name, g_variant_new_boolean(kept.alert.*value));
  }
  if (kept.due) g_variant_dict_insert_value(&fields, kDue, g_variant_new_double(kept.due->count()));
  if (kept.shown) {
    g_variant_dict_insert_value(&fields, kServer, Bytes(kept.shown->server));
    g_variant_dict_insert_value(&fields, kServerId, g_variant_new_uint32(kept.shown->id));
  }
  const GVariantPtr all(g_variant_ref_sink(g_variant_dict_end(&fields)));
  return {static_cast<const char*>(g_variant_get_data(all.get())), g_variant_get_size(all.get())};
}

GVariantPtr FieldOf(GVariant* fields, const char* name, const GVariantType* type) {
  return GVariantPtr(g_variant_lookup_value(fields, name, type));
}

std::optional<std::string> TextOf(GVariant* fields, const char* name) {
  const GVariantPtr value = FieldOf(fields, name, G_VARIANT_TYPE_BYTESTRING);
  if (!value) return std::nullopt;
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(value.get(), &size, 1));
  return std::string(bytes != nullptr ? bytes : "", size);
}

std::optional<KeptAlert> Parsed(UserNotifications::Key key, const std::string& contents) {
  const GVariantPtr fields(g_variant_ref_sink(
      g_variant_new_from_data(G_VARIANT_TYPE_VARDICT, contents.data(), contents.size(), FALSE, nullptr, nullptr)));
  if (!g_variant_is_normal_form(fields.get())) return std::nullopt;
  KeptAlert kept{.key = std::move(key)};
  for (const auto& [name, value] : kTexts) kept.alert.*value = TextOf(fields.get(), name);
  for (const auto& [name, value] : kFlags) {
    const GVariantPtr flag = FieldOf(fields.get(), name, G_VARIANT_TYPE_BOOLEAN);
    kept.alert.*value = flag && g_variant_get_boolean(flag.get());
  }
  if (const GVariantPtr due = FieldOf(fields.get(), kDue, G_VARIANT_TYPE_DOUBLE)) {
    kept.due = UserNotifications::Moment(g_variant_get_double(due.get()));
    // Moments are sorted.
    if (!std::isfinite(kept.due->count())) return std::nullopt;
  }
  const GVariantPtr id = FieldOf(fields.get(), kServerId, G_VARIANT_TYPE_UINT32);
  auto server = TextOf(fields.get(), kServer);
  if (id && server && !kept.due) kept.shown = {std::move(*server), g_variant_get_uint32(id.get())};
  return kept.due || kept.shown ? std::optional(std::move(kept)) : std::nullopt;
}

}  // namespace

std::vector<KeptAlert> AlertFiles::All() const noexcept {
  std::vector<KeptAlert> alerts;
  std::error_code error;
  for (fs::directory_iterator each(directory_, error), end; !error && each != end; each.increment(error)) {
    if (each->path().extension() != kExtension) continue;
    const auto contents = ReadFile(each->path(), kMostBytes);
    auto kept = contents ? Parsed(each->path().stem(), *contents) : std::nullopt;
    if (kept) alerts.push_back(std::move(*kept));
  }
  return alerts;
}

bool AlertFiles::Keep(const KeptAlert& alert) const noexcept {
  std::error_code error;
  fs::create_directories(directory_, error);
  fs::permissions(directory_, fs::perms::owner_all, error);
  const std::string contents = Serialised(alert);
  const fs::path file = FileOf(alert.key);
  // For the user only: the texts are mail. A power failure also ends the alerts on screen.
  return (alert.due ? ReplaceFile(file, contents) : ReplaceTransientFile(file, contents)).has_value();
}

void AlertFiles::Remove(const UserNotifications::Key& key) const noexcept {
  std::error_code error;
  fs::remove(FileOf(key), error);
}

fs::path AlertFiles::FileOf(const UserNotifications::Key& key) const { return directory_ / (key + kExtension); }

}  // namespace tessaro::platform
