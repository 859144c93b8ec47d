#pragma once

#include <cstdint>
#include <span>
#include <string_view>

// The entities of the previous version's two stores, with the names under which their properties are stored.

enum class TsAttributeType : std::uint8_t { Int16, Int32, Int64, Boolean, Text, Date, Data };

struct TsAttribute {
  std::string_view name;
  TsAttributeType type;
};

struct TsRelationship {
  std::string_view name;
  std::string_view destination;  // an entity
  std::string_view inverse;      // its relationship back
  bool isToMany = false;         // such an object owns the related ones: they are deleted with it
};

// The class of an entity's objects has the entity's name after "Ts".
struct TsEntity {
  std::string_view name;
  std::span<const TsAttribute> attributes;
  std::span<const TsRelationship> relationships;
};

// nullptr if missing. Names match in any letter case: the framework stores entities in capitals and properties
// in small letters.
[[nodiscard]] const TsEntity* TsEntityNamed(std::string_view name);
[[nodiscard]] bool TsIsSameName(std::string_view a, std::string_view b);
