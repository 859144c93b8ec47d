#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Migration/TsStoreModel.h"

// An object of a store. It stays where it is as long as the store is open.
struct TsStoreObject {
  const TsEntity* entity;
  std::size_t number;  // in the order of the file, new ones last
  bool isDeleted = false;
};

struct TsStoreError {
  int code;  // of the Cocoa error domain
  std::string reason;
};

// An object graph in the platform's XML store format: read at once, changed in memory, written back on demand.
//
// Entities and properties are found in any letter case, as the framework stores them in its own: entities in capitals,
// properties in small letters. What the model does not know is kept, and so are the store's identity and metadata.
// References to objects that are missing, or of another entity, are as good as none. Nothing throws. One thread.
class TsStoreFile {
 public:
  // null, and `error`, when there is no such file, or no store in it.
  [[nodiscard]] static std::unique_ptr<TsStoreFile> Open(std::filesystem::path file, std::span<const TsEntity> model,
                                                         TsStoreError& error) noexcept;
  ~TsStoreFile();

  // Those that are not deleted, in the order of their numbers.
  [[nodiscard]] std::vector<TsStoreObject*> Objects(const TsEntity& entity) const noexcept;

  // Numbers are below this.
  [[nodiscard]] std::size_t Size() const noexcept;

  // The value's text, which lives until the next change or, if it had to be put together, as long as `buffer`.
  // Nothing when there is no value. `attribute` is its position in the entity.
  [[nodiscard]] std::optional<std::string_view> Value(const TsStoreObject& object, std::size_t attribute,
                                                      std::string& buffer) const noexcept;
  void SetValue(TsStoreObject& object, std::size_t attribute, std::optional<std::string_view> text) noexcept;

  // Each related object once, in the order of the references.
  [[nodiscard]] std::vector<TsStoreObject*> Related(const TsStoreObject& object,
                                                    std::string_view relationship) const noexcept;

  // Makes `object` the last of those that `owner` has in a to-many relationship, and `owner` its one.
  void Append(TsStoreObject& owner, std::string_view relationship, TsStoreObject& object) noexcept;

  [[nodiscard]] TsStoreObject& Insert(const TsEntity& entity) noexcept;

  // With everything that it owns.
  void Delete(TsStoreObject& object) noexcept;

  [[nodiscard]] bool HasChanges() const noexcept;

  // Puts the changes into the file as it is now, all of them or none. Whether it did.
  [[nodiscard]] bool Save(TsStoreError& error) noexcept;

  // Forgets all changes since the store was opened or saved; objects that were new are deleted ones then.
  void Rollback() noexcept;

 private:
  class Body;
  explicit TsStoreFile(std::unique_ptr<Body> body);

  std::unique_ptr<Body> body_;
};
