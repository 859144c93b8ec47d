#include "ParseProbe.h"

#include <chrono>
#include <pugixml.hpp>

#include "Probe.h"

namespace {

// The milliseconds that parsing a file takes, from the disk to the document; null when it is no XML.
void timeParse(ProbeArguments args) {
  const v8::String::Utf8Value file(args.GetIsolate(), args[0]);
  const auto start = std::chrono::steady_clock::now();
  pugi::xml_document document;
  if (!document.load_file(*file)) return args.GetReturnValue().SetNull();
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  args.GetReturnValue().Set(elapsed.count());
}

}  // namespace

void AttachParseProbe(v8::Local<v8::Object> exports) { NODE_SET_METHOD(exports, "timeParse", timeParse); }
