#include "Migration/TsStoreFile.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <pugixml.hpp>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "Migration/TsStoreText.h"
#include "Platform/FileReplacement.h"

namespace {

// Far above what a person has, far below what would exhaust a machine: a document takes about five times its file.
constexpr std::uintmax_t kMostBytes = 512 << 20;

// Codes of the Cocoa error domain.
constexpr int kReadUnknown = 256;
constexpr int kReadNoSuchFile = 260;
constexpr int kReadTooLarge = 263;
constexpr int kReadCorrupt = 259;
constexpr int kWriteUnknown = 512;

constexpr unsigned kParsing =
    pugi::parse_default | pugi::parse_declaration | pugi::parse_doctype | pugi::parse_ws_pcdata_single;
constexpr unsigned kWriting = pugi::format_indent | pugi::format_no_empty_element_tags;

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

}  // namespace

class TsStoreFile::Body {
 public:
  Body(std::filesystem::path file, std::span<const TsEntity> model) : file_(std::move(file)), model_(model) {}

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
  struct Record : TsStoreObject {
    std::string id;
    pugi::xml_node element;
    std::size_t firstSlot;  // of its properties' elements in slots_: attributes, then relationships
    std::size_t visit = 0;  // the last walk that came by
  };

  static const Record& RecordOf(const TsStoreObject& object) { return static_cast<const Record&>(object); }
  static Record& RecordOf(TsStoreObject& object) { return static_cast<Record&>(object); }

  [[nodiscard]] static std::size_t RelationshipIndex(const Record& record, std::string_view name) {
    return IndexOf(record.entity->relationships, name);
  }
  [[nodiscard]] std::string_view References(const Record& record, std::size_t relationship) {
    return RelationshipSlot(record, relationship).attribute("idrefs").value();
  }
  [[nodiscard]] pugi::xml_node Database() const { return document_.child("database"); }
  [[nodiscard]] const TsEntity* EntityOf(pugi::xml_node element) const;
  [[nodiscard]] pugi::xml_node& AttributeSlot(const Record& record, std::size_t attribute) {
    return slots_[record.firstSlot + attribute];
  }
  [[nodiscard]] pugi::xml_node& RelationshipSlot(const Record& record, std::size_t relationship) {
    return slots_[record.firstSlot + record.entity->attributes.size() + relationship];
  }

  void BindObjects();
  void Bind(Record& record, pugi::xml_node element);
  Record& Add(const TsEntity& entity, std::string_view id);
  [[nodiscard]] std::string NewIdentifier();
  void SetReferences(Record& record, std::size_t relationship, const std::string& ids);
  void RemoveDeadReferences(Record& record);
  void WillChange();

  std::filesystem::path file_;
  std::span<const TsEntity> model_;
  pugi::xml_document document_;
  std::unique_ptr<pugi::xml_document> saved_;  // as it was before the first change
  std::deque<Record> records_;
  std::vector<pugi::xml_node> slots_;
  std::unordered_map<std::string_view, Record*> byId_;
  std::size_t visits_ = 0;
  std::uint64_t nextNumber_ = 0;  // of a new identifier; 0 until one is wanted
};

bool TsStoreFile::Body::Read(TsStoreError& error) {
  std::error_code failure;
  const auto status = std::filesystem::status(file_, failure);
  if (status.type() == std::filesystem::file_type::not_found) {
    error = {kReadNoSuchFile, "There is no such file."};
    return false;
  }
  // A pipe or a device might never end.
  if (failure || !std::filesystem::is_regular_file(status)) {
    error = {kReadUnknown, failure ? failure.message() : "It is not a file."};
    return false;
  }
  if (std::filesystem::file_size(file_, failure) > kMostBytes) {
    error = {kReadTooLarge, failure ? failure.message() : "The file is too large."};
    return false;
  }
  const auto result = document_.load_file(file_.c_str(), kParsing);
  if (!result) {
    const bool isContents = result.status >= pugi::status_unrecognized_tag;
    error = {isContents ? kReadCorrupt : kReadUnknown,
             std::string(result.description()) + " at byte " + std::to_string(result.offset)};
    return false;
  }
  if (!Database()) {
    error = {kReadCorrupt, "It is no object graph."};
    return false;
  }
  BindObjects();
  return true;
}

const TsEntity* TsStoreFile::Body::EntityOf(pugi::xml_node element) const {
  const std::string_view type = element.attribute("type").value();
  const auto found =
      std::find_if(model_.begin(), model_.end(), [&](const TsEntity& entity) { return IsSameName(entity.name, type); });
  return found != model_.end() ? &*found : nullptr;
}

void TsStoreFile::Body::BindObjects() {
  for (Record& record : records_) record.isDeleted = true;
  for (const pugi::xml_node element : Database().children("object")) {
    const TsEntity* entity = EntityOf(element);
    const std::string_view id = element.attribute("id").value();
    if (entity == nullptr || id.empty()) continue;
    const auto known = byId_.find(id);
    if (known == byId_.end()) {
      Bind(Add(*entity, id), element);
    } else if (known->second->isDeleted) {
      known->second->isDeleted = false;
      Bind(*known->second, element);
    }
  }
}

TsStoreFile::Body::Record& TsStoreFile::Body::Add(const TsEntity& entity, std::string_view id) {
  Record& record = records_.emplace_back(Record{{&entity, records_.size()}, std::string(id), {}, slots_.size()});
  slots_.resize(slots_.size() + entity.attributes.size() + entity.relationships.size());
  byId_.insert_or_assign(record.id, &record);
  return record;
}

void TsStoreFile::Body::Bind(Record& record, pugi::xml_node element) {
  const TsEntity& entity = *record.entity;
  record.element = element;
  const auto first = slots_.begin() + static_cast<std::ptrdiff_t>(record.firstSlot);
  std::fill_n(first, entity.attributes.size() + entity.relationships.size(), pugi::xml_node());
  for (const pugi::xml_node property : element.children()) {
    const std::string_view kind = property.name();
    const std::string_view name = property.attribute("name").value();
    if (kind == "attribute") {
      const std::size_t index = IndexOf(entity.attributes, name);
      if (index < entity.attributes.size()) AttributeSlot(record, index) = property;
    } else if (kind == "relationship") {
      const std::size_t index = IndexOf(entity.relationships, name);
      if (index < entity.relationships.size()) RelationshipSlot(record, index) = property;
    }
  }
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
  if (record.isDeleted) return std::nullopt;
  const pugi::xml_node element = slots_[record.firstSlot + attribute];
  if (!element) return std::nullopt;
  const pugi::xml_node first = element.first_child();
  if (!first.next_sibling()) return TsTextFromStore(first.value(), buffer);
  std::string pieces;
  for (const pugi::xml_node piece : element.children()) pieces += piece.value();
  std::string text;
  buffer = std::string(TsTextFromStore(pieces, text));
  return buffer;
}

void TsStoreFile::Body::SetValue(TsStoreObject& object, std::size_t attribute, std::optional<std::string_view> text) {
  Record& record = RecordOf(object);
  if (record.isDeleted) return;
  WillChange();
  pugi::xml_node& element = AttributeSlot(record, attribute);
  if (!text) {
    record.element.remove_child(element);
    element = {};
    return;
  }
  if (!element) {
    // The framework writes attributes before relationships.
    const pugi::xml_node relationship = record.element.child("relationship");
    element = relationship ? record.element.insert_child_before("attribute", relationship)
                           : record.element.append_child("attribute");
    const TsAttribute& description = record.entity->attributes[attribute];
    SetXmlAttribute(element, "name", PropertyNameInFile(description.name));
    SetXmlAttribute(element, "type", std::string(description.storedType));
  }
  element.remove_children();
  element.append_child(pugi::node_pcdata).set_value(TsTextForStore(*text).c_str());
}

std::vector<TsStoreObject*> TsStoreFile::Body::Related(const TsStoreObject& object, std::string_view relationship) {
  const Record& record = RecordOf(object);
  std::vector<TsStoreObject*> related;
  if (record.isDeleted) return related;
  const std::size_t index = RelationshipIndex(record, relationship);
  const TsRelationship& description = record.entity->relationships[index];
  const std::size_t visit = ++visits_;
  ForEachReference(References(record, index), [&](std::string_view id) {
    const auto found = byId_.find(id);
    if (found == byId_.end()) return;
    Record& other = *found->second;
    if (other.isDeleted || other.entity->name != description.destination) return;
    if (std::exchange(other.visit, visit) != visit) related.push_back(&other);
  });
  return related;
}

void TsStoreFile::Body::SetReferences(Record& record, std::size_t relationship, const std::string& ids) {
  pugi::xml_node& element = RelationshipSlot(record, relationship);
  if (!element) {
    const TsRelationship& description = record.entity->relationships[relationship];
    element = record.element.append_child("relationship");
    SetXmlAttribute(element, "name", PropertyNameInFile(description.name));
    SetXmlAttribute(element, "type", description.cardinality == TsCardinality::One ? "1/1" : "0/0");
    SetXmlAttribute(element, "destination", EntityNameInFile(description.destination));
  }
  if (ids.empty()) {
    element.remove_attribute("idrefs");
  } else {
    SetXmlAttribute(element, "idrefs", ids);
  }
}

void TsStoreFile::Body::Append(TsStoreObject& owner, std::string_view relationship, TsStoreObject& object) {
  Record& one = RecordOf(owner);
  Record& other = RecordOf(object);
  if (one.isDeleted || other.isDeleted) return;
  WillChange();
  const std::size_t index = RelationshipIndex(one, relationship);
  std::string ids(References(one, index));
  if (!ids.empty()) ids += ' ';
  SetReferences(one, index, ids + other.id);
  SetReferences(other, RelationshipIndex(other, one.entity->relationships[index].inverse), one.id);
}

std::string TsStoreFile::Body::NewIdentifier() {
  pugi::xml_node info = Database().child("databaseInfo");
  if (!info) info = Database().prepend_child("databaseInfo");
  pugi::xml_node next = info.child("nextObjectID");
  if (!next) next = info.append_child("nextObjectID");
  if (nextNumber_ == 0) {
    nextNumber_ = std::max<std::uint64_t>(next.text().as_ullong(), 1);
    // Objects of unknown entities have identifiers too.
    for (const pugi::xml_node element : Database().children("object")) {
      nextNumber_ = std::max(nextNumber_, NumberOf(element.attribute("id").value()) + 1);
    }
  }
  const std::string id = "z" + std::to_string(nextNumber_++);
  next.text().set(static_cast<unsigned long long>(nextNumber_));
  return id;
}

TsStoreObject& TsStoreFile::Body::Insert(const TsEntity& entity) {
  WillChange();
  const std::string id = NewIdentifier();
  pugi::xml_node element = Database().append_child("object");
  SetXmlAttribute(element, "type", EntityNameInFile(entity.name));
  SetXmlAttribute(element, "id", id);
  Record& record = Add(entity, id);
  Bind(record, element);
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
  Database().remove_child(record.element);
}

void TsStoreFile::Body::RemoveDeadReferences(Record& record) {
  for (std::size_t index = 0; index < record.entity->relationships.size(); ++index) {
    std::string ids;
    bool hasDead = false;
    ForEachReference(References(record, index), [&](std::string_view id) {
      const auto found = byId_.find(id);
      if (found != byId_.end() && found->second->isDeleted) {
        hasDead = true;
      } else {
        ids += ids.empty() ? "" : " ";
        ids += id;
      }
    });
    if (hasDead) SetReferences(record, index, ids);
  }
}

bool TsStoreFile::Body::Save(TsStoreError& error) {
  for (Record& record : records_) {
    if (!record.isDeleted) RemoveDeadReferences(record);
  }
  StringWriter writer;
  // Whatever it was, it is UTF-8 now.
  if (pugi::xml_attribute encoding = document_.first_child().attribute("encoding")) encoding.set_value("UTF-8");
  document_.save(writer, "    ", kWriting, pugi::encoding_utf8);
  if (const auto failure = tessaro::platform::ReplaceFile(file_, writer.text)) {
    error = {kWriteUnknown, failure.message()};
    return false;
  }
  saved_.reset();
  return true;
}

void TsStoreFile::Body::WillChange() {
  if (saved_ != nullptr) return;
  saved_ = std::make_unique<pugi::xml_document>();
  saved_->reset(document_);
}

void TsStoreFile::Body::Rollback() {
  if (saved_ == nullptr) return;
  document_ = std::move(*saved_);
  saved_.reset();
  BindObjects();
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
