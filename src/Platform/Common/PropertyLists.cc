#include "Platform/Common/PropertyLists.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "Base/TsUnicode.h"

namespace tessaro::platform {

namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;
constexpr int kDeepest = 128;
constexpr int kMostValues = 200000;

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

  // An entry in the table of offsets, or in a container.
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
    // There can't be more elements than bytes, and a larger number could overflow.
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

// ---- Texts

// Removes everything up to the end of `mark`. False without such a mark.
bool Skip(std::string_view& text, std::string_view mark) {
  const auto place = text.find(mark);
  text.remove_prefix(place == text.npos ? text.size() : place + mark.size());
  return place != text.npos;
}

// The tag without its brackets, which are taken off; nothing at the end of the text.
std::optional<std::string_view> TakeTag(std::string_view& text) {
  const auto end = text.find('>');
  if (end == text.npos) return std::nullopt;
  const std::string_view tag = text.substr(1, end - 1);
  text.remove_prefix(end + 1);
  return tag;
}

// Every element ends, in the order of their beginnings. Entities are not declared.
bool IsShallowXML(std::string_view text) {
  std::vector<std::string_view> open;
  while (open.size() <= kDeepest) {
    text.remove_prefix(std::min(text.find('<'), text.size()));
    if (text.empty()) return open.empty();
    if (text.starts_with("<!--") ? Skip(text, "-->") : text.starts_with("<![CDATA[") && Skip(text, "]]>")) continue;
    const auto tag = TakeTag(text);
    if (!tag || tag->find('[') != tag->npos) return false;
    if (tag->starts_with('?') || tag->starts_with('!')) continue;
    const std::string_view name = tag->substr(0, tag->find_first_of(" \t\r\n/", 1));
    if (name.starts_with('/')) {
      if (open.empty() || open.back() != name.substr(1)) return false;
      open.pop_back();
    } else if (!tag->ends_with('/') || tag->find_first_of("'\"") != tag->npos) {
      open.push_back(name);
    }
  }
  return false;
}

// A quoted text without its quotation marks, which are taken off.
bool SkipQuoted(std::string_view& text) {
  const char mark = text.front();
  for (std::size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\\') {
      ++i;
    } else if (text[i] == mark) {
      text.remove_prefix(i + 1);
      return true;
    }
  }
  return false;
}

bool IsShallowText(std::string_view text) {
  int depth = 0;
  while (depth <= kDeepest) {
    text.remove_prefix(std::min(text.find_first_of("(){}\"/"), text.size()));
    if (text.empty()) return true;
    if (text.front() == '"') {
      if (!SkipQuoted(text)) return false;
    } else if (text.starts_with("/*")) {
      if (!Skip(text, "*/")) return false;
    } else if (text.starts_with("//")) {
      Skip(text, "\n");
    } else {
      if (text.front() == '(' || text.front() == '{') ++depth;
      if (text.front() == ')' || text.front() == '}') --depth;
      text.remove_prefix(1);
    }
  }
  return false;
}

}  // namespace

bool IsSoundPropertyList(std::string_view list) noexcept {
  if (list.starts_with(kMagic)) return Walk(list).IsSound();
  const auto first = list.find_first_not_of(" \t\r\n\v\f");
  if (first != list.npos && list.substr(first).starts_with("<?")) return IsShallowXML(list);
  // A text in UTF-16, or GNUstep's own serialization.
  if (list.find('\0') != list.npos || list.starts_with('\1')) return false;
  return IsShallowText(list);
}

// ---- GNUstep's own serialization

namespace {

// Goes through strings and arrays. A node is a code, a number of four bytes and its contents.
class SerializedWalk {
 public:
  explicit SerializedWalk(std::string_view list) : rest_(list) {}

  bool IsSound() {
    if (rest_.empty()) return false;
    sharesStrings_ = rest_.front() != 0;
    rest_.remove_prefix(1);
    return IsNodeSound(0);
  }

 private:
  static constexpr std::size_t kNodeSize = 5;
  enum Code : std::uint8_t { kReference, kCString, kString, kArray, kMutableArray };

  bool IsNodeSound(int depth) {
    if (rest_.size() < kNodeSize || depth > kDeepest) return false;
    const auto code = static_cast<std::uint8_t>(rest_.front());
    std::uint64_t count = 0;
    for (const char byte : rest_.substr(1, kNodeSize - 1)) count = count << 8 | static_cast<std::uint8_t>(byte);
    rest_.remove_prefix(kNodeSize);
    switch (code) {
      case kReference:
        return sharesStrings_ && count < strings_;
      case kCString:  // ends with NUL
        return count > 0 && IsStringSound(count);
      case kString:
        return IsStringSound(2 * count);
      case kArray:
      case kMutableArray:
        if (count > rest_.size() / kNodeSize) return false;
        while (count-- > 0) {
          if (!IsNodeSound(depth + 1)) return false;
        }
        return true;
      default:
        return false;
    }
  }

  bool IsStringSound(std::uint64_t size) {
    if (size > rest_.size()) return false;
    rest_.remove_prefix(size);
    ++strings_;
    return true;
  }

  std::string_view rest_;
  bool sharesStrings_ = false;
  std::size_t strings_ = 0;
};

}  // namespace

bool IsSoundSerialization(std::string_view list) noexcept { return SerializedWalk(list).IsSound(); }

// ---- Escapes

namespace {

constexpr std::size_t kEscapeLength = 6;  // \UXXXX
// No character; the reader takes it for a byte order mark, and drops it together with what follows.
constexpr char16_t kSwappedMark = 0xFFFE;

bool IsHex(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool StartsWithEscape(std::string_view text) {
  return text.size() >= kEscapeLength && text[0] == '\\' && text[1] == 'U' &&
         std::all_of(text.begin() + 2, text.begin() + kEscapeLength, IsHex);
}

// 0 if missing.
char16_t EscapedUnit(std::string_view text) {
  return StartsWithEscape(text) ? static_cast<char16_t>(std::stoul(std::string(text.substr(2, 4)), nullptr, 16)) : 0;
}

}  // namespace

std::optional<std::u16string> EscapedForPropertyList(std::u16string_view text) {
  std::u16string kept(text);
  ReplaceLoneSurrogates(kept);
  std::replace(kept.begin(), kept.end(), kSwappedMark, u'\uFFFD');
  std::u16string escaped;
  escaped.reserve(kept.size());
  for (std::size_t i = 0; i < kept.size(); ++i) {
    // The reader accepts some other characters as digits too.
    const bool isEscape = kept[i] == '\\' && i + 1 < kept.size() && kept[i + 1] == 'U';
    escaped += isEscape ? u"\\U005C" : std::u16string(1, kept[i]);
  }
  return escaped == text ? std::nullopt : std::optional(std::move(escaped));
}

std::string WithSurrogatesJoined(std::string_view xml) {
  std::string joined;
  joined.reserve(xml.size());
  for (std::size_t i = 0; i < xml.size();) {
    const char16_t pair[] = {EscapedUnit(xml.substr(i)),
                             EscapedUnit(xml.substr(std::min(i + kEscapeLength, xml.size())))};
    if (IsHighSurrogate(pair[0]) && IsLowSurrogate(pair[1])) {
      joined += Utf16ToUtf8({pair, 2});
      i += 2 * kEscapeLength;
    } else {
      joined += xml[i++];
    }
  }
  return joined;
}

}  // namespace tessaro::platform
