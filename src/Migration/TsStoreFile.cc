#include "Migration/TsStoreFile.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <deque>
#include <fstream>
#include <pugixml.hpp>
#include <unordered_map>
#include <utility>

#include "Migration/TsStoreText.h"
#include "Platform/FileWriting.h"

namespace {

// Far above what a person has, far below what would exhaust a machine: a document takes about five times its file.
constexpr std::uintmax_t kMostBytes = 512 << 20;

// Codes of the Cocoa error domain.
constexpr int kReadUnknown = 256;
constexpr int kReadNoSuchFile = 260;
constexpr int kReadTooLarge = 263;
constexpr int kReadCorrupt = 259;
constexpr int kWriteUnknown = 512;

constexpr unsigned kParsing = pugi::parse_default | pugi::parse_ws_pcdata_single;
constexpr unsigned kReading = kParsing | pugi::parse_embed_pcdata;  // half the nodes
constexpr unsigned kEditing = kParsing | pugi::parse_declaration | pugi::parse_doctype;
constexpr unsigned kWriting = pugi::format_indent | pugi::format_no_empty_element_tags;

constexpr std::string_view kObjectStart = "<object";
constexpr std::string_view kObjectEnd = "</object>";
constexpr std::string_view kRootEnd = "</database>";

constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
constexpr char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c; }

bool IsSameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return ToLower(x) == ToLower(y); });
}

std::string Mapped(std::string_view name, char (*map)(char)) {
  std::string mapped(name);
  std::transform(mapped.begin(), mapped.end(), mapped.begin(), map);
  return mapped;
}

std::string EntityNameInFile(std::string_view name) { return Mapped(name, ToUpper); }
std::string PropertyNameInFile(std::string_view name) { return Mapped(name, ToLower); }

// Calls `visit` with each of the identifiers in a list.
template <typename Visit>
void ForEachReference(std::string_view list, const Visit& visit) {
  constexpr std::string_view kSpace = " \t\r\n";
  for (;;) {
    const std::size_t start = list.find_first_not_of(kSpace);
    if (start == std::string_view::npos) return;
    list.remove_prefix(start);
    const std::string_view id = list.substr(0, list.find_first_of(kSpace));
    visit(id);
    list.remove_prefix(id.size());
  }
}

// The number in an identifier like "z102"; 0 for any other.
std::uint64_t NumberOf(std::string_view id) {
  std::uint64_t number = 0;
  if (id.starts_with('z')) std::from_chars(id.data() + 1, id.data() + id.size(), number);
  return number;
}

template <typename Property>
std::size_t IndexOf(std::span<const Property> properties, std::string_view name) {
  const auto found = std::find_if(properties.begin(), properties.end(),
                                  [&](const Property& property) { return IsSameName(property.name, name); });
  return static_cast<std::size_t>(found - properties.begin());
}

class StringWriter final : public pugi::xml_writer {
 public:
  void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }

  std::string text;
};

void SetXmlAttribute(pugi::xml_node element, const char* name, const std::string& value) {
  pugi::xml_attribute attribute = element.attribute(name);
  if (!attribute) attribute = element.append_attribute(name);
  attribute.set_value(value.c_str());
}

TsStoreError ErrorOf(const pugi::xml_parse_result& result) {
  const bool isContents = result.status >= pugi::status_unrecognized_tag;
  return {isContents ? kReadCorrupt : kReadUnknown,
          std::string(result.description()) + " at byte " + std::to_string(result.offset)};
}

struct Bytes {
  std::unique_ptr<char[]> data;
  std::size_t size = 0;
};

// The file's contents; nothing, and the error, when it can't be read.
std::optional<Bytes> ReadFile(const std::filesystem::path& file, TsStoreError& error) {
  std::error_code failure;
  const auto status = std::filesystem::status(file, failure);
  if (status.type() == std::filesystem::file_type::not_found) {
    error = {kReadNoSuchFile, "There is no such file."};
    return std::nullopt;
  }
  // A pipe or a device might never end.
  if (failure || !std::filesystem::is_regular_file(status)) {
    error = {kReadUnknown, failure ? failure.message() : "It is not a file."};
    return std::nullopt;
  }
  const std::uintmax_t size = std::filesystem::file_size(file, failure);
  if (failure || size > kMostBytes) {
    error = {kReadTooLarge, failure ? failure.message() : "The file is too large."};
    return std::nullopt;
  }
  Bytes bytes{std::unique_ptr<char[]>(new char[size])};
  std::ifstream stream(file, std::ios::binary);
  if (!stream.read(bytes.data.get(), static_cast<std::streamsize>(size)) && !stream.eof()) {
    error = {kReadUnknown, "The file can't be read."};
    return std::nullopt;
  }
  // It may have become shorter meanwhile.
  bytes.size = static_cast<std::size_t>(stream.gcount());
  return bytes;
}

// Elements mostly begin with the attribute that is asked for.
const char* AttributeOf(pugi::xml_node element, const char* name) {
  const pugi::xml_attribute first = element.first_attribute();
  return std::strcmp(first.name(), name) == 0 ? first.value() : element.attribute(name).value();
}

bool IsDatabase(const std::string& text) {
  pugi::xml_document document;
  return document.load_string(text.c_str(), kReading) && document.child("database");
}

}  // namespace

class TsStoreFile::Body {
 public:
  Body(std::filesystem::path file, std::span<const TsEntity> model)
      : file_(std::move(file)), model_(model), expected_(model.size()) {}

  bool Read(TsStoreError& error);

  [[nodiscard]] std::vector<TsStoreObject*> Objects(const TsEntity& entity);
  [[nodiscard]] std::size_t Size() const { return records_.size(); }
  [[nodiscard]] std::optional<std::string_view> Value(const TsStoreObject& object, std::size_t attribute,
                                                      std::string& buffer) const;
  void SetValue(TsStoreObject& object, std::size_t attribute, std::optional<std::string_view> text);
  [[nodiscard]] std::vector<TsStoreObject*> Related(const TsStoreObject& object, std::string_view relationship);
  void Append(TsStoreObject& owner, std::string_view relationship, TsStoreObject& object);
  [[nodiscard]] TsStoreObject& Insert(const TsEntity& entity);
  void Delete(TsStoreObject& object);
  [[nodiscard]] bool HasChanges() const { return saved_ != nullptr; }
  bool Save(TsStoreError& error);
  void Rollback();

 private:
  // The stored text of an attribute, or the references of a relationship. No text is no value.
  struct Slot {
    const char* text = nullptr;
    std::uint32_t size = 0;
    bool isChanged = false;

    [[nodiscard]] std::string_view View() const { return {text, size}; }
  };

  struct Record : TsStoreObject {
    std::string_view id;
    std::size_t firstSlot;  // of its attributes, which its relationships follow
    std::size_t visit = 0;  // the last walk that came by
    bool isNew = false;     // to the file
  };

  // Where a property of the file belongs.
  struct Property {
    std::string name;
    std::size_t slot;
  };

  static constexpr std::size_t kNoSlot = static_cast<std::size_t>(-1);

  // What a rollback goes back to.
  struct State {
    std::vector<Slot> slots;
    std::vector<bool> areDeleted;
  };

  static const Record& RecordOf(const TsStoreObject& object) { return static_cast<const Record&>(object); }
  static Record& RecordOf(TsStoreObject& object) { return static_cast<Record&>(object); }

  static std::size_t RelationshipIndex(const Record& record, std::string_view name) {
    return IndexOf(record.entity->relationships, name);
  }

  [[nodiscard]] Slot& AttributeSlot(const Record& record, std::size_t attribute) {
    return slots_[record.firstSlot + attribute];
  }
  [[nodiscard]] Slot& RelationshipSlot(const Record& record, std::size_t relationship) {
    return slots_[record.firstSlot + record.entity->attributes.size() + relationship];
  }

  bool Load(TsStoreError& error);
  bool ReadInPieces();
  bool ReadAsAWhole(TsStoreError& error);
  void ReadObjects(pugi::xml_node parent);
  void ReadObject(pugi::xml_node element);
  void ReadProperties(const Record& record, pugi::xml_node element);
  static Property PropertyOf(const TsEntity& entity, std::string_view name);
  [[nodiscard]] Slot TextOf(pugi::xml_node element);
  static Slot ReferencesOf(pugi::xml_node element);
  [[nodiscard]] const TsEntity* EntityOf(std::string_view type) const;

  void WillChange();
  Record* Add(const TsEntity& entity, std::string_view id);
  void Set(Slot& slot, std::optional<std::string_view> text);
  [[nodiscard]] std::string_view Keep(std::string text) { return texts_.emplace_back(std::move(text)); }
  void RemoveDeadReferences(const Record& record);
  void Edit(pugi::xml_node database);
  void EditObject(pugi::xml_node element, const Record& record);
  void DidSave();

  std::filesystem::path file_;
  std::span<const TsEntity> model_;
  std::vector<std::vector<Property>> expected_;  // by entity, in their order
  Bytes bytes_;                                  // of the file, where the texts are that nobody has changed
  pugi::xml_document document_;                  // of a file that has to be read as a whole
  std::deque<std::string> texts_;                // all others
  std::deque<Record> records_;
  std::vector<Slot> slots_;
  std::unordered_map<std::string_view, Record*> byId_;
  std::unique_ptr<State> saved_;  // when there are changes
  std::size_t visits_ = 0;
  std::uint64_t highestNumber_ = 0;  // in an identifier
};

bool TsStoreFile::Body::Load(TsStoreError& error) {
  auto bytes = ReadFile(file_, error);
  if (bytes) bytes_ = std::move(*bytes);
  return bytes.has_value();
}

bool TsStoreFile::Body::Read(TsStoreError& error) {
  if (!Load(error)) return false;
  byId_.reserve(bytes_.size / 256);
  slots_.reserve(bytes_.size / 64);
  if (ReadInPieces()) return true;
  records_.clear();
  slots_.clear();
  byId_.clear();
  // The pieces have been parsed in their place.
  return Load(error) && ReadAsAWhole(error);
}

// A document of the whole file takes several times its memory, most of which is touched twice, and that is what reading
// a large store costs. Objects stand one after the other, so it is read in pieces of some of them that fit in a cache.
// A boundary that is none, as one in a comment, leaves a piece that does not parse.
bool TsStoreFile::Body::ReadInPieces() {
  constexpr std::size_t kPiece = 64 << 10;
  const std::string_view file(bytes_.data.get(), bytes_.size);
  std::size_t start = file.find(kObjectStart);
  const std::size_t last = file.rfind(kObjectEnd);
  if (start == std::string_view::npos || last == std::string_view::npos || last < start) return false;
  const std::size_t end = last + kObjectEnd.size();
  const std::string head(file.substr(0, start));
  if (!IsDatabase(head + std::string(kRootEnd)) || !IsDatabase("<database>" + std::string(file.substr(end))))
    return false;
  while (start < end) {
    const std::size_t boundary = file.find(kObjectEnd, std::min(start + kPiece, last)) + kObjectEnd.size();
    pugi::xml_document piece;
    if (!piece.load_buffer_inplace(bytes_.data.get() + start, boundary - start, kReading, pugi::encoding_utf8)) {
      return false;
    }
    ReadObjects(piece);
    start = boundary;
  }
  return true;
}

bool TsStoreFile::Body::ReadAsAWhole(TsStoreError& error) {
  const auto result = document_.load_buffer_inplace(bytes_.data.get(), bytes_.size, kReading);
  if (!result) {
    error = ErrorOf(result);
    return false;
  }
  if (!document_.child("database")) {
    error = {kReadCorrupt, "It is no object graph."};
    return false;
  }
  ReadObjects(document_.child("database"));
  return true;
}

void TsStoreFile::Body::ReadObjects(pugi::xml_node parent) {
  for (const pugi::xml_node element : parent.children("object")) ReadObject(element);
}

void TsStoreFile::Body::ReadObject(pugi::xml_node element) {
  const std::string_view id = element.attribute("id").value();
  // Objects of unknown entities have identifiers too.
  highestNumber_ = std::max(highestNumber_, NumberOf(id));
  const TsEntity* entity = EntityOf(AttributeOf(element, "type"));
  if (entity == nullptr || id.empty()) return;
  if (Record* record = Add(*entity, id)) ReadProperties(*record, element);
}

TsStoreFile::Body::Property TsStoreFile::Body::PropertyOf(const TsEntity& entity, std::string_view name) {
  const std::size_t attribute = IndexOf(entity.attributes, name);
  if (attribute < entity.attributes.size()) return {std::string(name), attribute};
  const std::size_t relationship = IndexOf(entity.relationships, name);
  const bool isKnown = relationship < entity.relationships.size();
  return {std::string(name), isKnown ? attribute + relationship : kNoSlot};
}

void TsStoreFile::Body::ReadProperties(const Record& record, pugi::xml_node element) {
  const TsEntity& entity = *record.entity;
  // Most objects have the properties that the one before had, in the same order.
  auto& expected = expected_[static_cast<std::size_t>(&entity - model_.data())];
  std::size_t position = 0;
  for (pugi::xml_node property = element.first_child(); property; property = property.next_sibling(), ++position) {
    const char* name = AttributeOf(property, "name");
    if (position == expected.size()) expected.push_back(PropertyOf(entity, name));
    Property& known = expected[position];
    if (std::strcmp(known.name.c_str(), name) != 0) known = PropertyOf(entity, name);
    if (known.slot == kNoSlot) continue;
    const bool isAttribute = known.slot < entity.attributes.size();
    slots_[record.firstSlot + known.slot] = isAttribute ? TextOf(property) : ReferencesOf(property);
  }
}

TsStoreFile::Body::Slot TsStoreFile::Body::ReferencesOf(pugi::xml_node element) {
  const std::string_view references = element.attribute("idrefs").value();
  return {references.data(), static_cast<std::uint32_t>(references.size())};
}

TsStoreFile::Body::Slot TsStoreFile::Body::TextOf(pugi::xml_node element) {
  std::string_view text = element.child_value();
  // More than the one piece that stands in the element itself.
  if (element.first_child()) {
    std::string pieces(element.value());
    for (const pugi::xml_node piece : element.children()) pieces += piece.value();
    text = Keep(std::move(pieces));
  }
  return {text.data(), static_cast<std::uint32_t>(text.size())};
}

const TsEntity* TsStoreFile::Body::EntityOf(std::string_view type) const {
  const auto found =
      std::find_if(model_.begin(), model_.end(), [&](const TsEntity& entity) { return IsSameName(entity.name, type); });
  return found != model_.end() ? &*found : nullptr;
}

// null when there is an object of that identifier already.
TsStoreFile::Body::Record* TsStoreFile::Body::Add(const TsEntity& entity, std::string_view id) {
  const auto [place, isNew] = byId_.try_emplace(id, nullptr);
  if (!isNew) return nullptr;
  place->second = &records_.emplace_back(Record{{&entity, records_.size()}, id, slots_.size()});
  slots_.resize(slots_.size() + entity.attributes.size() + entity.relationships.size());
  return place->second;
}

std::vector<TsStoreObject*> TsStoreFile::Body::Objects(const TsEntity& entity) {
  std::vector<TsStoreObject*> objects;
  for (Record& record : records_) {
    if (record.entity == &entity && !record.isDeleted) objects.push_back(&record);
  }
  return objects;
}

std::optional<std::string_view> TsStoreFile::Body::Value(const TsStoreObject& object, std::size_t attribute,
                                                         std::string& buffer) const {
  const Record& record = RecordOf(object);
  const Slot& slot = slots_[record.firstSlot + attribute];
  if (record.isDeleted || slot.text == nullptr) return std::nullopt;
  return TsTextFromStore(slot.View(), buffer);
}

void TsStoreFile::Body::Set(Slot& slot, std::optional<std::string_view> text) {
  const std::string_view kept = text ? Keep(std::string(*text)) : std::string_view();
  slot = {kept.data(), static_cast<std::uint32_t>(kept.size()), true};
}

void TsStoreFile::Body::SetValue(TsStoreObject& object, std::size_t attribute, std::optional<std::string_view> text) {
  const Record& record = RecordOf(object);
  if (record.isDeleted) return;
  WillChange();
  Set(AttributeSlot(record, attribute), text ? std::optional(TsTextForStore(*text)) : std::nullopt);
}

std::vector<TsStoreObject*> TsStoreFile::Body::Related(const TsStoreObject& object, std::string_view relationship) {
  const Record& record = RecordOf(object);
  std::vector<TsStoreObject*> related;
  if (record.isDeleted) return related;
  const std::size_t index = RelationshipIndex(record, relationship);
  const TsRelationship& description = record.entity->relationships[index];
  const std::size_t visit = ++visits_;
  ForEachReference(RelationshipSlot(record, index).View(), [&](std::string_view id) {
    const auto found = byId_.find(id);
    if (found == byId_.end()) return;
    Record& other = *found->second;
    if (other.isDeleted || other.entity->name != description.destination) return;
    if (std::exchange(other.visit, visit) != visit) related.push_back(&other);
  });
  return related;
}

void TsStoreFile::Body::Append(TsStoreObject& owner, std::string_view relationship, TsStoreObject& object) {
  const Record& one = RecordOf(owner);
  const Record& other = RecordOf(object);
  if (one.isDeleted || other.isDeleted) return;
  WillChange();
  const std::size_t index = RelationshipIndex(one, relationship);
  Slot& references = RelationshipSlot(one, index);
  std::string ids(references.View());
  if (!ids.empty()) ids += ' ';
  Set(references, ids.append(other.id));
  Set(RelationshipSlot(other, RelationshipIndex(other, one.entity->relationships[index].inverse)), one.id);
}

TsStoreObject& TsStoreFile::Body::Insert(const TsEntity& entity) {
  WillChange();
  Record& record = *Add(entity, Keep("z" + std::to_string(++highestNumber_)));
  record.isNew = true;
  return record;
}

void TsStoreFile::Body::Delete(TsStoreObject& object) {
  Record& record = RecordOf(object);
  if (record.isDeleted) return;
  WillChange();
  for (const TsRelationship& relationship : record.entity->relationships) {
    if (!relationship.isOwner) continue;
    for (TsStoreObject* owned : Related(record, relationship.name)) Delete(*owned);
  }
  record.isDeleted = true;
}

void TsStoreFile::Body::WillChange() {
  if (saved_ != nullptr) return;
  saved_ = std::make_unique<State>();
  saved_->slots = slots_;
  for (const Record& record : records_) saved_->areDeleted.push_back(record.isDeleted);
}

void TsStoreFile::Body::Rollback() {
  if (saved_ == nullptr) return;
  std::copy(saved_->slots.begin(), saved_->slots.end(), slots_.begin());
  for (Record& record : records_) {
    record.isDeleted = record.number >= saved_->areDeleted.size() || saved_->areDeleted[record.number];
  }
  saved_.reset();
}

void TsStoreFile::Body::RemoveDeadReferences(const Record& record) {
  for (std::size_t index = 0; index < record.entity->relationships.size(); ++index) {
    Slot& references = RelationshipSlot(record, index);
    std::string ids;
    bool hasDead = false;
    ForEachReference(references.View(), [&](std::string_view id) {
      const auto found = byId_.find(id);
      if (found != byId_.end() && found->second->isDeleted) {
        hasDead = true;
      } else {
        ids += ids.empty() ? "" : " ";
        ids += id;
      }
    });
    if (hasDead) Set(references, ids);
  }
}

void TsStoreFile::Body::EditObject(pugi::xml_node element, const Record& record) {
  const TsEntity& entity = *record.entity;
  const auto find = [&](const char* kind, std::string_view name) {
    return element.find_child([&](pugi::xml_node child) {
      return std::string_view(child.name()) == kind && IsSameName(child.attribute("name").value(), name);
    });
  };
  for (std::size_t i = 0; i < entity.attributes.size(); ++i) {
    const Slot& slot = AttributeSlot(record, i);
    if (!slot.isChanged) continue;
    pugi::xml_node attribute = find("attribute", entity.attributes[i].name);
    if (slot.text == nullptr) {
      element.remove_child(attribute);
      continue;
    }
    if (!attribute) {
      // The framework writes attributes before relationships.
      const pugi::xml_node next = element.child("relationship");
      attribute = next ? element.insert_child_before("attribute", next) : element.append_child("attribute");
      SetXmlAttribute(attribute, "name", PropertyNameInFile(entity.attributes[i].name));
      SetXmlAttribute(attribute, "type", std::string(entity.attributes[i].storedType));
    }
    attribute.remove_children();
    attribute.append_child(pugi::node_pcdata).set_value(slot.text);
  }
  for (std::size_t i = 0; i < entity.relationships.size(); ++i) {
    const Slot& slot = RelationshipSlot(record, i);
    if (!slot.isChanged) continue;
    const TsRelationship& description = entity.relationships[i];
    pugi::xml_node relationship = find("relationship", description.name);
    if (!relationship) {
      relationship = element.append_child("relationship");
      SetXmlAttribute(relationship, "name", PropertyNameInFile(description.name));
      SetXmlAttribute(relationship, "type", description.cardinality == TsCardinality::One ? "1/1" : "0/0");
      SetXmlAttribute(relationship, "destination", EntityNameInFile(description.destination));
    }
    if (slot.size == 0) {
      relationship.remove_attribute("idrefs");
    } else {
      SetXmlAttribute(relationship, "idrefs", slot.text);
    }
  }
}

void TsStoreFile::Body::Edit(pugi::xml_node database) {
  std::unordered_map<std::string_view, pugi::xml_node> elements;
  for (const pugi::xml_node element : database.children("object")) {
    elements.emplace(element.attribute("id").value(), element);
  }
  for (const Record& record : records_) {
    const auto found = elements.find(record.id);
    pugi::xml_node element = found != elements.end() ? found->second : pugi::xml_node();
    if (record.isDeleted) {
      if (!record.isNew) database.remove_child(element);
      continue;
    }
    if (!element && record.isNew) {
      element = database.append_child("object");
      SetXmlAttribute(element, "type", EntityNameInFile(record.entity->name));
      SetXmlAttribute(element, "id", std::string(record.id));
    }
    RemoveDeadReferences(record);
    if (element) EditObject(element, record);
  }
  pugi::xml_node info = database.child("databaseInfo");
  if (!info) info = database.prepend_child("databaseInfo");
  pugi::xml_node next = info.child("nextObjectID");
  if (!next) next = info.append_child("nextObjectID");
  if (next.text().as_ullong() <= highestNumber_) next.text().set(static_cast<unsigned long long>(highestNumber_ + 1));
}

bool TsStoreFile::Body::Save(TsStoreError& error) {
  const auto bytes = ReadFile(file_, error);
  if (!bytes) return false;
  pugi::xml_document document;
  if (const auto result = document.load_buffer_inplace(bytes->data.get(), bytes->size, kEditing); !result) {
    error = ErrorOf(result);
    return false;
  }
  Edit(document.child("database"));
  // Whatever it was, it is UTF-8 now.
  if (pugi::xml_attribute encoding = document.first_child().attribute("encoding")) encoding.set_value("UTF-8");
  StringWriter writer;
  document.save(writer, "    ", kWriting, pugi::encoding_utf8);
  if (const auto failure = tessaro::platform::ReplaceFile(file_, writer.text)) {
    error = {kWriteUnknown, failure.message()};
    return false;
  }
  DidSave();
  return true;
}

void TsStoreFile::Body::DidSave() {
  for (Slot& slot : slots_) slot.isChanged = false;
  for (Record& record : records_) record.isNew = record.isNew && record.isDeleted;
  saved_.reset();
}

TsStoreFile::TsStoreFile(std::unique_ptr<Body> body) : body_(std::move(body)) {}

TsStoreFile::~TsStoreFile() = default;

std::unique_ptr<TsStoreFile> TsStoreFile::Open(std::filesystem::path file, std::span<const TsEntity> model,
                                               TsStoreError& error) noexcept {
  auto body = std::make_unique<Body>(std::move(file), model);
  if (!body->Read(error)) return nullptr;
  return std::unique_ptr<TsStoreFile>(new TsStoreFile(std::move(body)));
}

std::vector<TsStoreObject*> TsStoreFile::Objects(const TsEntity& entity) const noexcept {
  return body_->Objects(entity);
}

std::size_t TsStoreFile::Size() const noexcept { return body_->Size(); }

std::optional<std::string_view> TsStoreFile::Value(const TsStoreObject& object, std::size_t attribute,
                                                   std::string& buffer) const noexcept {
  return body_->Value(object, attribute, buffer);
}

void TsStoreFile::SetValue(TsStoreObject& object, std::size_t attribute,
                           std::optional<std::string_view> text) noexcept {
  body_->SetValue(object, attribute, text);
}

std::vector<TsStoreObject*> TsStoreFile::Related(const TsStoreObject& object,
                                                 std::string_view relationship) const noexcept {
  return body_->Related(object, relationship);
}

void TsStoreFile::Append(TsStoreObject& owner, std::string_view relationship, TsStoreObject& object) noexcept {
  body_->Append(owner, relationship, object);
}

TsStoreObject& TsStoreFile::Insert(const TsEntity& entity) noexcept { return body_->Insert(entity); }

void TsStoreFile::Delete(TsStoreObject& object) noexcept { body_->Delete(object); }

bool TsStoreFile::HasChanges() const noexcept { return body_->HasChanges(); }

bool TsStoreFile::Save(TsStoreError& error) noexcept { return body_->Save(error); }

void TsStoreFile::Rollback() noexcept { body_->Rollback(); }
