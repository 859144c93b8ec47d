#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// The entities of the previous version's two stores, with the names under which their properties are stored.

enum class TsAttributeType : std::uint8_t { Number, Boolean, Text, Date, Data };

struct TsAttribute {
  std::string_view name;
  TsAttributeType type;
  std::string_view storedType;  // for values that are new to a file
};

enum class TsCardinality : std::uint8_t { One, Many, ManyOrdered };

struct TsRelationship {
  std::string_view name;
  TsCardinality cardinality;
  std::string_view destination;  // an entity
  std::string_view inverse;      // its relationship back
  bool isOwner = false;          // deleting this object deletes the related ones
};

struct TsEntity {
  std::string_view name;
  const char* className;
  std::span<const TsAttribute> attributes;
  std::span<const TsRelationship> relationships;
};

[[nodiscard]] std::span<const TsEntity> TsAccountsModel();
[[nodiscard]] std::span<const TsEntity> TsWorkspaceStatesModel();

// nullptr if missing.
[[nodiscard]] const TsEntity* TsEntityNamed(std::span<const TsEntity> model, std::string_view name);
[[nodiscard]] const TsEntity* TsEntityOfClass(std::string_view className);
