#include <algorithm>
#include <array>
#include <vector>

#include "Platform/FoundationValues.h"
#include "Platform/Linux/AppKit/CompactObject.h"
#include "Platform/Linux/AppKit/TsCompactString.h"

namespace {

struct Pair {
  id key;
  id value;
};

}  // namespace

// A mutable dictionary with its pairs behind the object, in the order in which they came. Made by
// NewMutableDictionary() only, for few keys: it looks them up one by one. When it is to hold more than it was made
// for, a dictionary of Foundation's takes over.
@interface TsCompactDictionary : NSMutableDictionary {
 @public
  std::uint32_t _extraReferences;
  std::uint32_t _capacity;
  NSUInteger _count;
  unsigned long _mutations;
  NSMutableDictionary* _grown;
}
@end

namespace {

Pair* PairsOf(TsCompactDictionary* dictionary) {
  return reinterpret_cast<Pair*>(reinterpret_cast<char*>(dictionary) + sizeof(TsCompactDictionary));
}

// A short key of ASCII characters, as the constants in our sources are: read once, and compared without asking the key
// for its hash, which constants work out each time, or whether it is equal, which goes by the rules of Unicode.
class ShortKey {
 public:
  explicit ShortKey(id key) {
    if (![key isKindOfClass:[NSString class]]) return;
    length_ = [key length];
    if (length_ > kLongest) return;
    std::array<unichar, kLongest> wide;
    [key getCharacters:wide.data() range:NSMakeRange(0, length_)];
    isASCII_ = std::all_of(wide.begin(), wide.begin() + length_, [](unichar character) { return character < 0x80; });
    std::copy_n(wide.begin(), length_, characters_.begin());
  }

  [[nodiscard]] bool IsASCII() const { return isASCII_; }

  [[nodiscard]] bool Is(const tessaro::platform::StringView& other) const {
    return other.length == length_ && std::equal(other.latin1, other.latin1 + length_, characters_.begin());
  }

 private:
  static constexpr NSUInteger kLongest = 64;

  NSUInteger length_ = 0;
  bool isASCII_ = false;
  std::array<std::uint8_t, kLongest> characters_;
};

void Release(const Pair& pair) {
  tessaro::platform::ReleaseObject(pair.key);
  tessaro::platform::ReleaseObject(pair.value);
}

void Destroy(TsCompactDictionary* dictionary) {
  std::for_each_n(PairsOf(dictionary), dictionary->_grown == nil ? dictionary->_count : 0, Release);
  [dictionary->_grown release];
  tessaro::platform::FreeCompactMemory(dictionary, sizeof(TsCompactDictionary) + dictionary->_capacity * sizeof(Pair));
}

}  // namespace

@implementation TsCompactDictionary

// The class makes no objects itself: `[[dictionary class] alloc]` must give what any other dictionary's class gives.
+ (id)allocWithZone:(NSZone*)zone {
  return static_cast<id>([NSMutableDictionary allocWithZone:zone]);
}

TS_COMPACT_REFERENCE_COUNTING(Destroy)

// The pair with `key`, or nullptr. Keys of one document are shared, so most lookups end with the first comparison.
- (Pair*)pairForKey:(id)key {
  Pair* const first = PairsOf(self);
  Pair* const end = first + _count;
  Pair* found = std::find_if(first, end, [key](const Pair& pair) { return pair.key == key; });
  if (found != end) return found;

  bool isNarrow = true;  // a key of other characters may be equal to one of ASCII
  const ShortKey text(key);
  for (Pair* pair = first; text.IsASCII() && isNarrow && pair != end; ++pair) {
    const auto contents = tessaro::platform::StringContents(pair->key);
    isNarrow = contents.latin1 != nullptr;
    if (isNarrow && text.Is(contents)) return pair;
  }
  if (text.IsASCII() && isNarrow) return nullptr;

  const NSUInteger hash = [key hash];
  found = std::find_if(first, end, [&](const Pair& pair) { return [pair.key hash] == hash && [pair.key isEqual:key]; });
  return found == end ? nullptr : found;
}

- (void)grow {
  _grown = [[NSMutableDictionary alloc] initWithCapacity:_count * 2];
  for (Pair* pair = PairsOf(self); pair != PairsOf(self) + _count; ++pair) {
    [_grown setObject:pair->value forKey:pair->key];
    Release(*pair);
  }
}

- (NSUInteger)count {
  return _grown == nil ? _count : [_grown count];
}

- (id)objectForKey:(id)key {
  if (key == nil) return nil;
  if (_grown != nil) return [_grown objectForKey:key];
  const Pair* pair = [self pairForKey:key];
  return pair == nullptr ? nil : pair->value;
}

- (void)setObject:(id)value forKey:(id)key {
  if (key == nil || value == nil)
    [NSException raise:NSInvalidArgumentException format:@"Tried to add nil to dictionary"];
  ++_mutations;
  if (_grown == nil) {
    if (Pair* pair = [self pairForKey:key]) {
      [value retain];
      [pair->value release];
      pair->value = value;
      return;
    }
    if (_count < _capacity) {
      PairsOf(self)[_count++] = {[key copy], [value retain]};
      return;
    }
    [self grow];
  }
  [_grown setObject:value forKey:key];
}

- (void)removeObjectForKey:(id)key {
  if (key == nil) return;
  ++_mutations;
  if (_grown != nil) return [_grown removeObjectForKey:key];
  Pair* pair = [self pairForKey:key];
  if (pair == nullptr) return;
  const Pair removed = *pair;
  std::move(pair + 1, PairsOf(self) + _count, pair);
  --_count;
  Release(removed);
}

- (NSArray*)allKeys {
  if (_grown != nil) return [_grown allKeys];
  std::vector<id> keys(_count);
  std::transform(PairsOf(self), PairsOf(self) + _count, keys.begin(), [](const Pair& pair) { return pair.key; });
  return [NSArray arrayWithObjects:keys.data() count:keys.size()];
}

- (NSEnumerator*)keyEnumerator {
  return [[self allKeys] objectEnumerator];
}

- (NSEnumerator*)objectEnumerator {
  if (_grown != nil) return [_grown objectEnumerator];
  std::vector<id> values(_count);
  std::transform(PairsOf(self), PairsOf(self) + _count, values.begin(), [](const Pair& pair) { return pair.value; });
  return [[NSArray arrayWithObjects:values.data() count:values.size()] objectEnumerator];
}

- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state objects:(id*)buffer count:(NSUInteger)room {
  state->mutationsPtr = &_mutations;
  if (_grown != nil) {
    const NSUInteger given = [_grown countByEnumeratingWithState:state objects:buffer count:room];
    state->mutationsPtr = &_mutations;
    return given;
  }
  const NSUInteger given = std::min<NSUInteger>(room, _count - state->state);
  std::transform(PairsOf(self) + state->state, PairsOf(self) + state->state + given, buffer,
                 [](const Pair& pair) { return pair.key; });
  state->state += given;
  state->itemsPtr = buffer;
  return given;
}

@end

namespace tessaro::platform {

namespace {

bool IsSameKey(id one, id other) {
  if (one == other) return true;
  if (!IsCompactString(one) || !IsCompactString(other)) return [one isEqual:other];
  const bool isAsLong = static_cast<TsCompactString*>(one)->_length == static_cast<TsCompactString*>(other)->_length;
  return isAsLong && [one isEqual:other];
}

bool HasTwins(NSString* const keys[], std::size_t count) {
  for (std::size_t i = 1; i < count; ++i) {
    for (std::size_t earlier = 0; earlier < i; ++earlier) {
      if (IsSameKey(keys[earlier], keys[i])) return true;
    }
  }
  return false;
}

}  // namespace

Ref<NSMutableDictionary> NewMutableDictionary(NSString* const ownedKeys[], id const ownedValues[], std::size_t count) {
  constexpr std::size_t kMostCompact = 32;
  if (count > kMostCompact || HasTwins(ownedKeys, count)) {
    auto dictionary = Adopt([[NSMutableDictionary alloc] initWithCapacity:count]);
    for (std::size_t i = 0; i < count; ++i) [dictionary.get() setObject:ownedValues[i] forKey:ownedKeys[i]];
    std::for_each_n(ownedKeys, count, ReleaseObject);
    std::for_each_n(ownedValues, count, ReleaseObject);
    return dictionary;
  }
  static const Class type = [TsCompactDictionary class];
  auto* dictionary = AllocateCompactObject<TsCompactDictionary>(type, count * sizeof(Pair));
  dictionary->_capacity = static_cast<std::uint32_t>(count);
  dictionary->_count = count;
  for (std::size_t i = 0; i < count; ++i) PairsOf(dictionary)[i] = {ownedKeys[i], ownedValues[i]};
  return Adopt<NSMutableDictionary>(dictionary);
}

}  // namespace tessaro::platform
