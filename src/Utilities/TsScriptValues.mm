#include "Utilities/TsScriptValues.h"

#include <node_buffer.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

#include "Base/TsString.h"
#include "Base/TsUnicode.h"

namespace {

// How a string's characters are copied out of the engine, without a NUL after them. V8 has replaced the functions for
// that: 12.4 has the former ones only, 13.6 both, later ones the `V2` functions only.
#define TESSARO_V8_HAS_WRITE_V2 (V8_MAJOR_VERSION > 13 || (V8_MAJOR_VERSION == 13 && V8_MINOR_VERSION >= 6))

void WriteLatin1(v8::Isolate* isolate, v8::Local<v8::String> text, std::uint8_t* characters, int length) {
#if TESSARO_V8_HAS_WRITE_V2
  text->WriteOneByteV2(isolate, 0, static_cast<std::uint32_t>(length), characters);
#else
  text->WriteOneByte(isolate, characters, 0, length, v8::String::NO_NULL_TERMINATION);
#endif
}

void WriteUtf16(v8::Isolate* isolate, v8::Local<v8::String> text, std::uint16_t* characters, int length) {
#if TESSARO_V8_HAS_WRITE_V2
  text->WriteV2(isolate, 0, static_cast<std::uint32_t>(length), characters);
#else
  text->Write(isolate, characters, 0, length, v8::String::NO_NULL_TERMINATION);
#endif
}

constexpr char kConversionFailed[] = "<string conversion failed>";
constexpr std::size_t kHandleSize = sizeof(id);

static_assert(kHandleSize == 8, "script keeps object handles in Buffers of 8 bytes");

Ref<NSString> CopyLatin1(v8::Isolate* isolate, v8::Local<v8::String> text, int length) {
  std::string characters(static_cast<std::size_t>(length), '\0');
  WriteLatin1(isolate, text, reinterpret_cast<std::uint8_t*>(characters.data()), length);
  return Adopt([[NSString alloc] initWithBytes:characters.data()
                                        length:characters.size()
                                      encoding:NSISOLatin1StringEncoding]);
}

Ref<NSString> CopyUtf16(v8::Isolate* isolate, v8::Local<v8::String> text, int length) {
  std::u16string characters(static_cast<std::size_t>(length), u'\0');
  WriteUtf16(isolate, text, reinterpret_cast<std::uint16_t*>(characters.data()), length);
  return TsNewString(std::move(characters));
}

Ref<NSString> CopyText(v8::Isolate* isolate, v8::Local<v8::String> text) {
  const int length = text->Length();
  return text->IsOneByte() ? CopyLatin1(isolate, text, length) : CopyUtf16(isolate, text, length);
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
  if ([string length] > static_cast<NSUInteger>(v8::String::kMaxLength)) return {};
  if (const auto narrow = TsLatin1(string)) {
    return v8::String::NewFromOneByte(isolate, reinterpret_cast<const std::uint8_t*>(narrow->data()),
                                      v8::NewStringType::kNormal, static_cast<int>(narrow->size()));
  }
  std::u16string characters = TsCharacters(string);
  ReplaceLoneSurrogates(characters);
  return v8::String::NewFromTwoByte(isolate, reinterpret_cast<const std::uint16_t*>(characters.data()),
                                    v8::NewStringType::kNormal, static_cast<int>(characters.size()));
}

id ToObjcObject(v8::Local<v8::Value> value) {
  if (!node::Buffer::HasInstance(value) || node::Buffer::Length(value) < kHandleSize) return nil;
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
