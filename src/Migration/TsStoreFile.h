#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Result.h"
#include "Migration/TsStoreModel.h"

namespace pugi {
class xml_document;
class xml_node;
}  // namespace pugi

// An object graph in the platform's XML store format: one document, read at once, changed in memory, and written back
// on demand. Objects go by their identifiers in the file.
//
// Entities and properties are found in any letter case, as the framework stores entities in capitals and properties in
// small letters. Whatever the model does not know is kept, and so are the store's identity and metadata. References to
// objects that are missing, or of another entity, are ignored. Failures have codes of the Cocoa error domain. Nothing
// throws. One thread.
class TsStoreFile {
 public:
  // The stored type and the text of an attribute.
  struct Value {
    std::string_view type;
    std::string text;
  };

  // Fails when there is no such file, or no store in it.
  [[nodiscard]] static Result<std::unique_ptr<TsStoreFile>> Open(std::filesystem::path file,
                                                                 std::span<const TsEntity> model) noexcept;
  ~TsStoreFile();

  // Those of the entity, in the order of the file.
  [[nodiscard]] std::vector<std::string> Objects(const TsEntity& entity) const noexcept;
  [[nodiscard]] bool Contains(const std::string& id) const noexcept;

  // Each attribute that has a value and is in the model, in one pass over the object.
  using Visitor = std::function<void(const TsAttribute& attribute, const Value& value)>;
  void ForEachValue(const std::string& id, const TsEntity& entity, const Visitor& visit) const noexcept;
  [[nodiscard]] std::optional<Value> ValueOf(const std::string& id, const TsAttribute& attribute) const noexcept;

  // No text removes the value. Does nothing for an object that is not there.
  void SetValue(const std::string& id, const TsAttribute& attribute, std::optional<std::string_view> text) noexcept;

  // Each related object once, in the order of the references.
  [[nodiscard]] std::vector<std::string> Related(const std::string& id,
                                                 const TsRelationship& relationship) const noexcept;

  // Adds `other` as the last reference of a to-many relationship, or makes it the one of a to-one relationship.
  void Relate(const std::string& id, const TsRelationship& relationship, const std::string& other) noexcept;

  // The new object's identifier.
  [[nodiscard]] std::string Insert(const TsEntity& entity) noexcept;

  // With everything that the object owns.
  void Delete(const std::string& id, const TsEntity& entity) noexcept;

  [[nodiscard]] bool HasChanges() const noexcept { return saved_ != nullptr; }

  // Replaces the file; on failure the file and the changes stay as they are.
  [[nodiscard]] Result<void> Save() noexcept;

  // Forgets all changes since the store was opened or saved.
  void Rollback() noexcept;

 private:
  TsStoreFile(std::filesystem::path file, std::span<const TsEntity> model);

  struct Index;

  [[nodiscard]] Result<void> Read();
  void FindObjects();
  [[nodiscard]] const TsEntity* EntityOf(const pugi::xml_node& object) const;
  [[nodiscard]] pugi::xml_node ObjectNamed(const std::string& id) const;
  void WillChange();
  void RemoveDeadReferences();
  void UpdateNextObjectId();

  std::filesystem::path file_;
  std::span<const TsEntity> model_;
  std::unique_ptr<pugi::xml_document> document_;
  std::unique_ptr<pugi::xml_document> saved_;  // the document to roll back to, while there are changes
  std::unique_ptr<Index> objects_;
  std::uint64_t highestNumber_ = 0;  // in an identifier
};
