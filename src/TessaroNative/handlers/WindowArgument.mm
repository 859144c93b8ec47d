#include "TessaroNative/handlers/WindowArgument.h"

#include <node_buffer.h>

#include <cstring>

#include "Window/WindowHandles.h"

NSWindow* ToWindow(v8::Local<v8::Value> value) {
  const void* reference = nullptr;
  if (!node::Buffer::HasInstance(value) || node::Buffer::Length(value) != sizeof reference) return nil;
  std::memcpy(&reference, node::Buffer::Data(value), sizeof reference);
  return TsLivingWindow(reference);
}
