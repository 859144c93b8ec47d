#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

// What the previous version keeps in its two stores: the entities with their properties, by the names they are stored
// under.

enum class TsAttributeType : std::uint8_t { Number, Boolean, Text, Date, Data };

struct TsAttribute {
  std::string_view name;
  TsAttributeType type;
  std::string_view storedType;  // of values that are new to a file
};

enum class TsCardinality : std::uint8_t { One, Many, ManyOrdered };

struct TsRelationship {
  std::string_view name;
  TsCardinality cardinality;
  std::string_view destination;  // an entity
  std::string_view inverse;      // its relationship back
  bool isOwner = false;          // the related objects are deleted with this one
};

struct TsEntity {
  std::string_view name;
  const char* className;
  std::span<const TsAttribute> attributes;
  std::span<const TsRelationship> relationships;
};

constexpr std::size_t kTsMostAttributes = 32;

[[nodiscard]] std::span<const TsEntity> TsAccountsModel();
[[nodiscard]] std::span<const TsEntity> TsWorkspaceStatesModel();

// null when there is none.
[[nodiscard]] const TsEntity* TsEntityNamed(std::span<const TsEntity> model, std::string_view name);
[[nodiscard]] const TsEntity* TsEntityOfClass(std::string_view className);
