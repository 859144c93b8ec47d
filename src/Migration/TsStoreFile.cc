#include "Migration/TsStoreFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <unordered_set>
#include <utility>

#include "Base/TextPieces.h"
#include "Platform/Files.h"

namespace {

// Ten times the store of a thousand accounts; a document takes up to sixteen times the memory of its file.
constexpr std::size_t kMostBytes = 64 << 20;

// Objects are on the second level and their values on the fourth; removing elements costs stack for each level.
constexpr int kMostLevels = 64;

// Codes of the Cocoa error domain.
constexpr int kReadUnknown = 256;
constexpr int kReadCorrupt = 259;
constexpr int kReadNoSuchFile = 260;
constexpr int kReadUnknownEncoding = 261;
constexpr int kReadTooLarge = 263;
constexpr int kWriteUnknown = 512;

constexpr unsigned kReading = pugi::parse_default | pugi::parse_ws_pcdata_single | pugi::parse_declaration |
                              pugi::parse_doctype | pugi::parse_comments;
constexpr unsigned kWriting = pugi::format_indent | pugi::format_no_empty_element_tags;

constexpr char kAttribute[] = "attribute";
constexpr char kRelationship[] = "relationship";
constexpr char kReferences[] = "idrefs";

// ---- Texts
//
// For characters with a meaning in XML, or none that XML allows, the platform's framework writes "\u" and the two bytes
// of the UTF-16 unit, lowest first: "\u3c00" is "<".

constexpr std::size_t kEscapeLength = 6;

bool IsEscaped(unsigned character) {
  return character < 0x20 || std::string_view("<>&\"'\\").find(static_cast<char>(character)) != std::string_view::npos;
}

// The character whose escape `text` begins with.
std::optional<char> EscapedCharacter(std::string_view text) {
  if (text.size() < kEscapeLength || !text.starts_with("\\u") || text.substr(4, 2) != "00") return std::nullopt;
  std::uint8_t character = 0;
  const auto [end, error] = std::from_chars(text.data() + 2, text.data() + 4, character, 16);
  if (error != std::errc() || end != text.data() + 4 || !IsEscaped(character)) return std::nullopt;
  return static_cast<char>(character);
}

void AppendEscaped(std::string& text, char character) {
  constexpr char kDigits[] = "0123456789abcdef";
  text += {'\\', 'u', kDigits[character >> 4 & 15], kDigits[character & 15], '0', '0'};
}

bool CantStandInXml(char character) {
  return character >= 0 && character < 0x20 && character != '\t' && character != '\n';
}

std::string TextFromStore(std::string_view stored) {
  std::string text;
  while (!stored.empty()) {
    const std::size_t plain = std::min(stored.find('\\'), stored.size());
    text += stored.substr(0, plain);
    stored.remove_prefix(plain);
    if (stored.empty()) break;
    const auto character = EscapedCharacter(stored);
    text += character.value_or(stored.front());
    stored.remove_prefix(character ? kEscapeLength : 1);
  }
  return text;
}

// XML's own escapes are the writer's business.
std::string TextForStore(std::string_view text) {
  std::string stored;
  stored.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (CantStandInXml(text[i]) || EscapedCharacter(text.substr(i))) {
      AppendEscaped(stored, text[i]);
    } else {
      stored += text[i];
    }
  }
  return stored;
}

// ---- Elements

std::string EntityNameInFile(std::string name) {
  for (char& c : name) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return name;
}

std::string PropertyNameInFile(std::string_view name) { return LowerCase(name); }

const char* StoredType(TsAttributeType type) {
  constexpr const char* kTypes[] = {"int16", "int32", "int64", "bool", "string", "date", "binary"};
  return kTypes[static_cast<std::size_t>(type)];
}

std::vector<std::string> References(pugi::xml_node relationship) {
  constexpr std::string_view kSpace = " \t\r\n";
  std::vector<std::string> ids;
  std::string_view list = relationship.attribute(kReferences).value();
  for (;;) {
    const std::size_t start = list.find_first_not_of(kSpace);
    if (start == list.npos) return ids;
    list.remove_prefix(start);
    ids.emplace_back(list.substr(0, list.find_first_of(kSpace)));
    list.remove_prefix(ids.back().size());
  }
}

// The number in an identifier like "z102"; 0 for any other.
std::uint64_t NumberOf(std::string_view id) {
  std::uint64_t number = 0;
  if (id.starts_with('z')) std::from_chars(id.data() + 1, id.data() + id.size(), number);
  return number;
}

void SetXmlAttribute(pugi::xml_node element, const char* name, const std::string& value) {
  pugi::xml_attribute attribute = element.attribute(name);
  if (!attribute) attribute = element.append_attribute(name);
  attribute.set_value(value.c_str());
}

void SetReferences(pugi::xml_node relationship, const std::vector<std::string>& ids) {
  std::string list;
  for (const std::string& id : ids) list.append(list.empty() ? "" : " ").append(id);
  if (list.empty()) {
    relationship.remove_attribute(kReferences);
  } else {
    SetXmlAttribute(relationship, kReferences, list);
  }
}

// The property of an object, "attribute" or "relationship", by its name.
pugi::xml_node Property(pugi::xml_node object, const char* kind, std::string_view name) {
  for (const pugi::xml_node property : object.children(kind)) {
    if (TsIsSameName(property.attribute("name").value(), name)) return property;
  }
  return {};
}

std::string TextIn(pugi::xml_node attribute) {
  std::string stored;
  for (const pugi::xml_node piece : attribute.children()) {
    if (piece.type() == pugi::node_pcdata || piece.type() == pugi::node_cdata) stored += piece.value();
  }
  return TextFromStore(stored);
}

bool IsDeep(pugi::xml_document& document) {
  struct Walker final : pugi::xml_tree_walker {
    bool for_each(pugi::xml_node&) override { return depth() < kMostLevels; }
  } walker;
  return !document.traverse(walker);
}

// The encodings that the parser recognizes, by a byte order mark or the declaration.
bool IsKnownEncoding(std::string_view name) {
  constexpr std::string_view kKnown[] = {"", "utf-8", "us-ascii", "ascii", "utf-16", "utf-32", "iso-8859-1", "latin1"};
  return std::any_of(std::begin(kKnown), std::end(kKnown), [&](auto known) { return TsIsSameName(known, name); });
}

// The Cocoa code for a system's error number.
int ReadCodeOf(int error) {
  if (error == ENOENT || error == ENOTDIR) return kReadNoSuchFile;
  return error == EFBIG ? kReadTooLarge : kReadUnknown;
}

Result<void> Parse(const std::string& bytes, pugi::xml_document& document) {
  const auto result = document.load_buffer(bytes.data(), bytes.size(), kReading);
  if (!result) {
    const bool isContents = result.status >= pugi::status_unrecognized_tag;
    return Fail(isContents ? kReadCorrupt : kReadUnknown,
                std::string(result.description()) + " at byte " + std::to_string(result.offset));
  }
  if (!document.child("database")) return Fail(kReadCorrupt, "It is no object graph.");
  const pugi::xml_node declaration = document.first_child();
  const std::string encoding =
      declaration.type() == pugi::node_declaration ? declaration.attribute("encoding").value() : "";
  if (!IsKnownEncoding(encoding))
    return Fail(kReadUnknownEncoding, "Its encoding, " + encoding + ", is not supported.");
  if (IsDeep(document)) return Fail(kReadCorrupt, "It is nested too deeply.");
  return {};
}

std::string Written(const pugi::xml_document& document) {
  struct Writer final : pugi::xml_writer {
    void write(const void* data, std::size_t size) override { text.append(static_cast<const char*>(data), size); }
    std::string text;
  } writer;
  document.save(writer, "    ", kWriting, pugi::encoding_utf8);
  return std::move(writer.text);
}

}  // namespace

Result<std::unique_ptr<TsStoreFile>> TsStoreFile::Open(std::filesystem::path file) noexcept {
  std::unique_ptr<TsStoreFile> store(new TsStoreFile(std::move(file)));
  if (auto read = store->Read(); !read) return tl::unexpected(std::move(read.error()));
  return store;
}

Result<void> TsStoreFile::Read() {
  const auto bytes = tessaro::platform::ReadFile(file_, kMostBytes);
  if (!bytes) return Fail(ReadCodeOf(bytes.error().code), bytes.error().message);
  if (auto parsed = Parse(*bytes, *document_); !parsed) return parsed;
  FindObjects();
  return {};
}

// Removes objects that repeat an earlier identifier: deleting the first object must not bring a later one back.
void TsStoreFile::FindObjects() {
  objects_.clear();
  pugi::xml_node database = document_->child("database");
  for (pugi::xml_node object = database.child("object"), next; object; object = next) {
    next = object.next_sibling("object");
    const std::string id = object.attribute("id").value();
    // Objects of unknown entities have identifiers too.
    highestNumber_ = std::max(highestNumber_, NumberOf(id));
    if (id.empty() || TsEntityNamed(object.attribute("type").value()) == nullptr) continue;
    if (!objects_.emplace(id, object).second) database.remove_child(object);
  }
}

pugi::xml_node TsStoreFile::ObjectNamed(const std::string& id) const {
  const auto found = objects_.find(id);
  return found != objects_.end() ? found->second : pugi::xml_node();
}

std::vector<std::string> TsStoreFile::Objects(const TsEntity& entity) const noexcept {
  std::vector<std::string> ids;
  for (const pugi::xml_node object : document_->child("database").children("object")) {
    const std::string id = object.attribute("id").value();
    if (Contains(id) && TsIsSameName(object.attribute("type").value(), entity.name)) ids.push_back(id);
  }
  return ids;
}

std::vector<TsStoreFile::Value> TsStoreFile::Values(const std::string& id, const TsEntity& entity) const noexcept {
  std::vector<Value> values;
  for (const pugi::xml_node property : ObjectNamed(id).children(kAttribute)) {
    const std::string_view name = property.attribute("name").value();
    const auto known = std::find_if(entity.attributes.begin(), entity.attributes.end(),
                                    [&](const TsAttribute& attribute) { return TsIsSameName(attribute.name, name); });
    if (known == entity.attributes.end()) continue;
    values.push_back({&*known, property.attribute("type").value(), TextIn(property)});
  }
  return values;
}

void TsStoreFile::SetValue(const std::string& id, const TsAttribute& attribute,
                           std::optional<std::string_view> text) noexcept {
  if (!Contains(id)) return;
  WillChange();
  pugi::xml_node object = ObjectNamed(id);
  pugi::xml_node property = Property(object, kAttribute, attribute.name);
  if (!text) {
    object.remove_child(property);
    return;
  }
  if (!property) {
    // The framework writes attributes before relationships.
    const pugi::xml_node next = object.child(kRelationship);
    property = next ? object.insert_child_before(kAttribute, next) : object.append_child(kAttribute);
    SetXmlAttribute(property, "name", PropertyNameInFile(std::string(attribute.name)));
    SetXmlAttribute(property, "type", StoredType(attribute.type));
  }
  property.remove_children();
  property.append_child(pugi::node_pcdata).set_value(TextForStore(*text).c_str());
}

std::vector<std::string> TsStoreFile::Related(const std::string& id,
                                              const TsRelationship& relationship) const noexcept {
  std::vector<std::string> related;
  std::unordered_set<std::string> known;
  for (std::string& other : References(Property(ObjectNamed(id), kRelationship, relationship.name))) {
    const pugi::xml_node object = ObjectNamed(other);
    if (!object || !TsIsSameName(object.attribute("type").value(), relationship.destination)) continue;
    if (known.insert(other).second) related.push_back(std::move(other));
  }
  return related;
}

void TsStoreFile::Relate(const std::string& id, const TsRelationship& relationship, const std::string& other) noexcept {
  if (!Contains(id) || !Contains(other)) return;
  WillChange();
  pugi::xml_node object = ObjectNamed(id);
  pugi::xml_node property = Property(object, kRelationship, relationship.name);
  if (!property) {
    property = object.append_child(kRelationship);
    SetXmlAttribute(property, "name", PropertyNameInFile(std::string(relationship.name)));
    SetXmlAttribute(property, "type", relationship.isToMany ? "0/0" : "1/1");
    SetXmlAttribute(property, "destination", EntityNameInFile(std::string(relationship.destination)));
  }
  std::vector<std::string> ids = relationship.isToMany ? References(property) : std::vector<std::string>();
  ids.push_back(other);
  SetReferences(property, ids);
}

std::string TsStoreFile::Insert(const TsEntity& entity) noexcept {
  WillChange();
  std::string id;
  do {
    id = "z" + std::to_string(++highestNumber_);
  } while (Contains(id));
  pugi::xml_node object = document_->child("database").append_child("object");
  SetXmlAttribute(object, "type", EntityNameInFile(std::string(entity.name)));
  SetXmlAttribute(object, "id", id);
  objects_.emplace(id, object);
  return id;
}

void TsStoreFile::Delete(const std::string& id, const TsEntity& entity) noexcept {
  if (!Contains(id)) return;
  WillChange();
  for (const TsRelationship& relationship : entity.relationships) {
    if (!relationship.isToMany) continue;
    const TsEntity& owned = *TsEntityNamed(relationship.destination);
    for (const std::string& other : Related(id, relationship)) Delete(other, owned);
  }
  document_->child("database").remove_child(ObjectNamed(id));
  objects_.erase(id);
}

void TsStoreFile::WillChange() {
  if (saved_ != nullptr) return;
  saved_ = std::move(document_);
  document_ = std::make_unique<pugi::xml_document>();
  document_->reset(*saved_);
  FindObjects();
}

void TsStoreFile::Rollback() noexcept {
  if (saved_ == nullptr) return;
  document_ = std::move(saved_);
  FindObjects();
}

void TsStoreFile::RemoveDeadReferences() {
  std::unordered_set<std::string> present;
  const auto objects = document_->child("database").children("object");
  for (const pugi::xml_node object : objects) present.emplace(object.attribute("id").value());
  for (const pugi::xml_node object : objects) {
    for (const pugi::xml_node relationship : object.children(kRelationship)) {
      std::vector<std::string> ids = References(relationship);
      if (std::erase_if(ids, [&](const std::string& id) { return !present.contains(id); }) > 0) {
        SetReferences(relationship, ids);
      }
    }
  }
}

void TsStoreFile::UpdateNextObjectId() {
  pugi::xml_node database = document_->child("database");
  pugi::xml_node info = database.child("databaseInfo");
  if (!info) info = database.prepend_child("databaseInfo");
  pugi::xml_node next = info.child("nextObjectID");
  if (!next) next = info.append_child("nextObjectID");
  if (next.text().as_ullong() <= highestNumber_) next.text().set(static_cast<unsigned long long>(highestNumber_ + 1));
}

Result<void> TsStoreFile::Save() noexcept {
  if (!HasChanges()) return {};
  RemoveDeadReferences();
  UpdateNextObjectId();
  if (pugi::xml_attribute encoding = document_->first_child().attribute("encoding")) encoding.set_value("UTF-8");
  const auto written = tessaro::platform::ReplaceFile(file_, Written(*document_));
  if (!written) return Fail(kWriteUnknown, written.error().message);
  saved_ = nullptr;
  return {};
}
