#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Base/Result.h"
#include "Migration/TsStoreModel.h"

// An object graph in the platform's XML store format: one document, read at once, changed in memory, and written back
// on demand. Objects go by their identifiers in the file.
//
// Whatever the model does not know is kept, and so are the store's identity and metadata. References to objects that
// are missing, or of another entity, are ignored. Failures have codes of the Cocoa error domain. Nothing throws. One
// thread.
class TsStoreFile {
 public:
  struct Value {
    const TsAttribute* attribute;
    std::string_view type;  // as stored
    std::string text;
  };

  // Fails when there is no such file, or no store in it.
  [[nodiscard]] static Result<std::unique_ptr<TsStoreFile>> Open(std::filesystem::path file) noexcept;

  // The entity's objects, in the order of the file.
  [[nodiscard]] std::vector<std::string> Objects(const TsEntity& entity) const noexcept;
  [[nodiscard]] bool Contains(const std::string& id) const noexcept { return objects_.contains(id); }

  // The attributes of the model that have a value.
  [[nodiscard]] std::vector<Value> Values(const std::string& id, const TsEntity& entity) const noexcept;

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
  explicit TsStoreFile(std::filesystem::path file) : file_(std::move(file)) {}

  [[nodiscard]] Result<void> Read();
  void FindObjects();
  [[nodiscard]] pugi::xml_node ObjectNamed(const std::string& id) const;
  void WillChange();
  void RemoveDeadReferences();
  void UpdateNextObjectId();

  std::filesystem::path file_;
  std::unique_ptr<pugi::xml_document> document_ = std::make_unique<pugi::xml_document>();
  std::unique_ptr<pugi::xml_document> saved_;  // the document to roll back to, while there are changes
  std::unordered_map<std::string, pugi::xml_node> objects_;
  std::uint64_t highestNumber_ = 0;  // in an identifier
};
