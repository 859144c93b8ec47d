#include "Utilities/TsScriptValues.h"

#include <node_buffer.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

#include "Base/TsUnicode.h"
#include "Platform/FoundationValues.h"

namespace platform = tessaro::platform;

namespace {

constexpr char kConversionFailed[] = "<string conversion failed>";
constexpr std::size_t kHandleSize = sizeof(id);
constexpr std::size_t kShortText = 256;
constexpr int kShortAscii = 64;
constexpr int kLongestInUtf8 = 4;

static_assert(kHandleSize == 8, "script keeps object handles in Buffers of 8 bytes");

Ref<NSString> CopyLatin1(v8::Isolate* isolate, v8::Local<v8::String> text, int length) {
  auto made = platform::NewLatin1String(static_cast<std::size_t>(length));
  text->WriteOneByte(isolate, made.characters, 0, length, v8::String::NO_NULL_TERMINATION);
  return std::move(made.string);
}

// nullptr unless the text is short and ASCII, as most are. One question to the engine costs as much as making the
// string, so everything is found out by the one call that also copies the characters.
Ref<NSString> CopyShortAscii(v8::Isolate* isolate, v8::Local<v8::String> text) {
  std::array<char, kShortAscii> characters;
  int length = 0;
  const int bytes = text->WriteUtf8(isolate, characters.data(), kShortAscii, &length, v8::String::NO_NULL_TERMINATION);
  const bool isWhole = bytes < kShortAscii - kLongestInUtf8;
  if (!isWhole || bytes != length) return nullptr;
  auto made = platform::NewLatin1String(static_cast<std::size_t>(length));
  std::copy_n(characters.data(), length, made.characters);
  return std::move(made.string);
}

Ref<NSString> CopyUtf16(v8::Isolate* isolate, v8::Local<v8::String> text, int length) {
  auto made = platform::NewUtf16String(static_cast<std::size_t>(length));
  text->Write(isolate, reinterpret_cast<std::uint16_t*>(made.characters), 0, length, v8::String::NO_NULL_TERMINATION);
  ReplaceLoneSurrogates(made.characters, static_cast<std::size_t>(length));
  return std::move(made.string);
}

Ref<NSString> CopyText(v8::Isolate* isolate, v8::Local<v8::String> text) {
  if (auto ascii = CopyShortAscii(isolate, text)) return ascii;
  const int length = text->Length();
  return text->IsOneByte() ? CopyLatin1(isolate, text, length) : CopyUtf16(isolate, text, length);
}

v8::MaybeLocal<v8::String> FromLatin1(v8::Isolate* isolate, const std::uint8_t* characters, std::size_t length) {
  return v8::String::NewFromOneByte(isolate, characters, v8::NewStringType::kNormal, static_cast<int>(length));
}

v8::MaybeLocal<v8::String> FromUtf16(v8::Isolate* isolate, const char16_t* characters, std::size_t length) {
  return v8::String::NewFromTwoByte(isolate, reinterpret_cast<const std::uint16_t*>(characters),
                                    v8::NewStringType::kNormal, static_cast<int>(length));
}

// Narrow strings take half the memory in the engine and are faster there, so it is worth a look.
v8::MaybeLocal<v8::String> FromCharacters(v8::Isolate* isolate, char16_t* characters, std::size_t length) {
  if (!FitsLatin1(characters, length)) {
    ReplaceLoneSurrogates(characters, length);
    return FromUtf16(isolate, characters, length);
  }
  auto* narrow = reinterpret_cast<std::uint8_t*>(characters);
  for (std::size_t i = 0; i < length; ++i) narrow[i] = static_cast<std::uint8_t>(characters[i]);
  return FromLatin1(isolate, narrow, length);
}

v8::MaybeLocal<v8::String> FromForeignString(v8::Isolate* isolate, NSString* string, std::size_t length) {
  const auto read = [&](char16_t* characters) {
    [string getCharacters:reinterpret_cast<unichar*>(characters) range:NSMakeRange(0, length)];
    return FromCharacters(isolate, characters, length);
  };
  if (length <= kShortText) {
    std::array<char16_t, kShortText> characters;
    return read(characters.data());
  }
  std::vector<char16_t> characters(length);
  return read(characters.data());
}

}  // namespace

Ref<NSString> TsCopyString(v8::Isolate* isolate, v8::Local<v8::Value> value) {
  if (value->IsString()) return CopyText(isolate, value.As<v8::String>());
  if (value->IsNullOrUndefined()) return nullptr;

  // A script's own toString() may throw; that must not surface in the middle of native work.
  const v8::TryCatch conversion(isolate);
  v8::Local<v8::String> text;
  if (!value->ToString(isolate->GetCurrentContext()).ToLocal(&text)) {
    return Retain<NSString>([NSString stringWithUTF8String:kConversionFailed]);
  }
  return CopyText(isolate, text);
}

NSString* convertToNSString(v8::Local<v8::Value> value) {
  return TsCopyString(v8::Isolate::GetCurrent(), value).Autoreleased();
}

const char* ToCString(const v8::String::Utf8Value& value) { return *value != nullptr ? *value : kConversionFailed; }

v8::MaybeLocal<v8::String> ToScriptString(v8::Isolate* isolate, NSString* string) {
  if (string == nil) return {};
  const auto contents = platform::StringContents(string);
  if (contents.latin1 != nullptr) return FromLatin1(isolate, contents.latin1, contents.length);
  if (contents.utf16 != nullptr) return FromUtf16(isolate, contents.utf16, contents.length);

  const NSUInteger length = [string length];
  if (length > static_cast<NSUInteger>(v8::String::kMaxLength)) return {};
  return FromForeignString(isolate, string, length);
}

id ToObjcObject(v8::Local<v8::Value> value) {
  if (!node::Buffer::HasInstance(value)) return nil;
  id object = nil;
  std::memcpy(&object, node::Buffer::Data(value), kHandleSize);
  return object;
}

v8::Local<v8::Value> ToBuffer(v8::Isolate* isolate, id object) {
  std::array<char, kHandleSize> bytes;
  std::memcpy(bytes.data(), &object, kHandleSize);
  v8::Local<v8::Object> buffer;
  if (!node::Buffer::Copy(isolate, bytes.data(), kHandleSize).ToLocal(&buffer)) return v8::Null(isolate);
  return buffer;
}

Ref<NSData> convertToNSData(v8::Local<v8::Value> value) {
  return Adopt([[NSData alloc] initWithBytes:node::Buffer::Data(value) length:node::Buffer::Length(value)]);
}
