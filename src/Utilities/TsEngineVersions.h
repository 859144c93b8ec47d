#pragma once

#include <v8.h>

#include <cstdint>

// How a string's characters are copied out of the engine, without a NUL after them. V8 has replaced the functions for
// that: 12.4 has the former ones only, 13.6 both, later ones the `V2` functions only.
namespace tessaro::engine {

#define TESSARO_V8_HAS_WRITE_V2 (V8_MAJOR_VERSION > 13 || (V8_MAJOR_VERSION == 13 && V8_MINOR_VERSION >= 6))

inline void WriteLatin1(v8::Isolate* isolate, v8::Local<v8::String> text, std::uint8_t* characters, int length) {
#if TESSARO_V8_HAS_WRITE_V2
  text->WriteOneByteV2(isolate, 0, static_cast<std::uint32_t>(length), characters);
#else
  text->WriteOneByte(isolate, characters, 0, length, v8::String::NO_NULL_TERMINATION);
#endif
}

inline void WriteUtf16(v8::Isolate* isolate, v8::Local<v8::String> text, std::uint16_t* characters, int length) {
#if TESSARO_V8_HAS_WRITE_V2
  text->WriteV2(isolate, 0, static_cast<std::uint32_t>(length), characters);
#else
  text->Write(isolate, characters, 0, length, v8::String::NO_NULL_TERMINATION);
#endif
}

}  // namespace tessaro::engine
