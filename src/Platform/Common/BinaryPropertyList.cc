#include "Platform/Common/BinaryPropertyList.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tessaro::platform {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr int kDeepest = 32;
constexpr int kMostValues = 10000;

// The type of a value: the upper half of its first byte.
enum class Kind {
  Constant = 0,
  Integer = 1,
  Real = 2,
  Date = 3,
  Data = 4,
  Latin = 5,
  Utf16 = 6,
  Reference = 8,
  Array = 10,
  Set = 12,
  Dictionary = 13
};

class Walk {
 public:
  explicit Walk(std::string_view list) : list_(list) {}

  bool IsSound() {
    if (!list_.starts_with(kMagic) || list_.size() < kMagic.size() + kTrailerSize) return false;
    const std::size_t trailer = list_.size() - kTrailerSize;
    offsetSize_ = Byte(trailer + 6);
    referenceSize_ = Byte(trailer + 7);
    const auto count = Integer(trailer + 8, 8);
    const auto top = Integer(trailer + 16, 8);
    const auto offsets = Integer(trailer + 24, 8);
    if (!count || !top || !offsets) return false;
    count_ = *count;
    offsets_ = *offsets;
    return VisitValue(*top, 0);
  }

 private:
  [[nodiscard]] std::uint8_t Byte(std::size_t position) const { return static_cast<std::uint8_t>(list_[position]); }

  // Big-endian; none beyond the end.
  [[nodiscard]] std::optional<std::size_t> Integer(std::size_t position, std::size_t size) const {
    if (size == 0 || size > 8 || !Holds(position, size)) return std::nullopt;
    std::size_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value = value << 8 | Byte(position + i);
    return value;
  }

  // Of the table of offsets, or of a container's members.
  [[nodiscard]] std::optional<std::size_t> Element(std::size_t start, std::size_t index, std::size_t size) const {
    if (start > list_.size() || index > list_.size()) return std::nullopt;
    return Integer(start + index * size, size);
  }

  [[nodiscard]] bool Holds(std::size_t position, std::size_t size) const {
    return position <= list_.size() && list_.size() - position >= size;
  }

  bool VisitValue(std::size_t value, int depth) {
    if (value >= count_ || depth > kDeepest || ++visited_ > kMostValues) return false;
    const auto position = Element(offsets_, value, offsetSize_);
    if (!position || !Holds(*position, 1)) return false;
    const unsigned low = Byte(*position) & 0xFU;
    const std::size_t content = *position + 1;
    switch (static_cast<Kind>(Byte(*position) >> 4)) {
      case Kind::Constant:
        return true;
      case Kind::Integer:
      case Kind::Real:
        return low <= 3 && Holds(content, std::size_t{1} << low);
      case Kind::Date:
        return Holds(content, 8);
      case Kind::Reference:
        return low <= 7 && Holds(content, low + 1);
      case Kind::Data:
      case Kind::Latin:
        return VisitSequence(content, low, 1);
      case Kind::Utf16:
        return VisitSequence(content, low, 2);
      case Kind::Array:
      case Kind::Set:
        return VisitContainer(content, low, 1, depth);
      case Kind::Dictionary:
        return VisitContainer(content, low, 2, depth);
    }
    return false;
  }

  // The first element and the number of elements. A large number stands in front of them, as an integer value.
  struct Extent {
    std::size_t start;
    std::size_t count;
  };

  [[nodiscard]] std::optional<Extent> ExtentOf(std::size_t content, unsigned low) const {
    if (low != 0xFU) return Extent{content, low};
    if (!Holds(content, 1) || Byte(content) >> 4 != static_cast<int>(Kind::Integer)) return std::nullopt;
    const std::size_t size = std::size_t{1} << (Byte(content) & 0xFU);
    const auto count = Integer(content + 1, size);
    // More than there are bytes can't be, and would not let itself be counted with.
    if (!count || *count > list_.size()) return std::nullopt;
    return Extent{content + 1 + size, *count};
  }

  [[nodiscard]] bool VisitSequence(std::size_t content, unsigned low, std::size_t elementSize) const {
    const auto extent = ExtentOf(content, low);
    return extent && Holds(extent->start, extent->count * elementSize);
  }

  bool VisitContainer(std::size_t content, unsigned low, std::size_t referencesPerMember, int depth) {
    const auto extent = ExtentOf(content, low);
    if (!extent) return false;
    for (std::size_t i = 0; i < extent->count * referencesPerMember; ++i) {
      const auto member = Element(extent->start, i, referenceSize_);
      if (!member || !VisitValue(*member, depth + 1)) return false;
    }
    return true;
  }

  std::string_view list_;
  std::size_t offsetSize_ = 0;
  std::size_t referenceSize_ = 0;
  std::size_t count_ = 0;
  std::size_t offsets_ = 0;
  int visited_ = 0;
};

}  // namespace

bool IsSoundBinaryPropertyList(std::string_view list) noexcept { return Walk(list).IsSound(); }

}  // namespace tessaro::platform
