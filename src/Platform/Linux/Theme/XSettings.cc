#include "Platform/Linux/Theme/XSettings.h"

#include <cstdlib>
#include <utility>

#include "Platform/MainQueue.h"

namespace tessaro::platform {

namespace {

constexpr std::uint32_t kLargestProperty = 256 << 10;
constexpr char kMostSignificantFirst = 1;

// Reads the property from its beginning; past its end everything is zero.
class PropertyReader {
 public:
  explicit PropertyReader(std::string_view bytes)
      : bytes_(bytes), isSwapped_(!bytes.empty() && bytes.front() == kMostSignificantFirst) {}

  [[nodiscard]] bool IsAtEnd() const { return position_ >= bytes_.size(); }

  void Skip(std::size_t count) { position_ += count; }

  template <typename Integer>
  Integer Next() {
    const std::string_view bytes = Bytes(sizeof(Integer));
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const std::size_t place = isSwapped_ ? sizeof(Integer) - 1 - i : i;
      value |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << 8 * place;
    }
    return static_cast<Integer>(value);
  }

  // Texts are padded to whole words.
  std::string Text(std::size_t size) {
    std::string text(Bytes(size));
    Skip((4 - size % 4) % 4);
    return text;
  }

 private:
  std::string_view Bytes(std::size_t count) {
    const std::string_view bytes = IsAtEnd() ? std::string_view() : bytes_.substr(position_, count);
    position_ += count;
    return bytes;
  }

  std::string_view bytes_;
  bool isSwapped_;
  std::size_t position_ = 0;
};

// "Xft.dpi:\t192" among the lines of the X resources.
double DPIOf(std::string_view resources) {
  constexpr std::string_view kName = "Xft.dpi:";
  const std::size_t found = resources.find(kName);
  if (found == std::string_view::npos || (found > 0 && resources[found - 1] != '\n')) return 0;
  return std::strtod(std::string(resources.substr(found + kName.size(), 32)).c_str(), nullptr);
}

}  // namespace

XSettings::Values XSettings::Parse(std::string_view property) {
  enum Type : std::uint8_t { kInteger, kText, kColour };
  constexpr std::size_t kColourSize = 8;
  PropertyReader reader(property);
  reader.Skip(8);
  const auto count = reader.Next<std::uint32_t>();
  Values values;
  for (std::uint32_t i = 0; i < count && !reader.IsAtEnd(); ++i) {
    const auto type = reader.Next<std::uint8_t>();
    reader.Skip(1);
    const std::string name = reader.Text(reader.Next<std::uint16_t>());
    reader.Skip(4);
    if (type == kInteger) values[name] = reader.Next<std::int32_t>();
    if (type == kText) values[name] = reader.Text(reader.Next<std::uint32_t>());
    if (type == kColour) reader.Skip(kColourSize);
    if (type > kColour) break;
  }
  return values;
}

XSettings::XSettings(std::function<void()> changed) : changed_(std::move(changed)) {
  if (!connection_) return;
  root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &events);
  Load();
  poll_ = MakeUvHandle<uv_poll_t>(this, uv_poll_init, xcb_get_file_descriptor(connection_.get()));
  if (!poll_) return;
  uv_poll_start(poll_.get(), UV_READABLE, [](uv_poll_t* handle, int, int) { OwnerOf<XSettings>(handle).ReadEvents(); });
}

std::string XSettings::Text(std::string_view name) const {
  const auto found = values_.find(name);
  const auto* text = found != values_.end() ? std::get_if<std::string>(&found->second) : nullptr;
  return text != nullptr ? *text : "";
}

std::int32_t XSettings::Number(std::string_view name) const {
  const auto found = values_.find(name);
  const auto* number = found != values_.end() ? std::get_if<std::int32_t>(&found->second) : nullptr;
  return number != nullptr ? *number : 0;
}

// Reads some of the events: a program that changes the settings without end must not stop all other work.
void XSettings::ReadEvents() {
  constexpr int kMostEvents = 1000;
  bool isChanged = false;
  int events = 0;
  for (; events < kMostEvents; ++events) {
    const XcbOwner<xcb_generic_event_t> event(xcb_poll_for_event(connection_.get()));
    if (!event) break;
    isChanged = IsOfInterest(*event) || isChanged;
  }
  if (!connection_) poll_.reset();
  if (isChanged) {
    Load();
    changed_();
  }
  // The descriptor does not announce events that have been read ahead: those beyond the limit, and those that came
  // with a reply.
  if (isChanged || events == kMostEvents) MainQueue::Shared().Post([this] { ReadEvents(); });
}

bool XSettings::IsOfInterest(const xcb_generic_event_t& event) const {
  if (const auto* message = EventAs<xcb_client_message_event_t>(event, XCB_CLIENT_MESSAGE)) {
    return message->window == root_;  // a new owner of a selection
  }
  if (const auto* destroyed = EventAs<xcb_destroy_notify_event_t>(event, XCB_DESTROY_NOTIFY)) {
    return destroyed->window == manager_;
  }
  const auto* property = EventAs<xcb_property_notify_event_t>(event, XCB_PROPERTY_NOTIFY);
  if (property == nullptr) return false;
  return property->window == manager_ || property->atom == XCB_ATOM_RESOURCE_MANAGER;
}

void XSettings::Load() {
  resourceDPI_ = DPIOf(Property(root_, XCB_ATOM_RESOURCE_MANAGER));
  manager_ = connection_.OwnerOf(connection_.Atom("_XSETTINGS_S0"));
  values_.clear();
  if (manager_ == XCB_NONE) return;
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_.get(), manager_, XCB_CW_EVENT_MASK, &events);
  values_ = Parse(Property(manager_, connection_.Atom("_XSETTINGS_SETTINGS")));
}

std::string XSettings::Property(xcb_window_t window, xcb_atom_t name) {
  const auto cookie =
      xcb_get_property(connection_.get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, kLargestProperty / 4);
  const XcbOwner<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection_.get(), cookie, nullptr));
  if (!reply) return {};
  return {static_cast<const char*>(xcb_get_property_value(reply.get())),
          static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

}  // namespace tessaro::platform
