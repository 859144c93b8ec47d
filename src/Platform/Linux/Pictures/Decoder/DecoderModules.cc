#include "Platform/Linux/Pictures/Decoder/DecoderModules.h"

#include <dlfcn.h>
#include <gmodule.h>
#include <unistd.h>
#include <vips/vips.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

namespace tessaro::platform {

namespace {

// A signature in a file's first bytes, and the module that reads such files.
struct DecoderModule {
  std::size_t offset;
  std::string_view signature;
  const char* file;
};
constexpr std::array kModules = {DecoderModule{0, "%PDF", "vips-poppler.so"}, DecoderModule{4, "ftyp", "vips-heif.so"}};

// Beside the library that this program is linked to.
std::filesystem::path ModuleFolder() {
  Dl_info library{};
  if (dladdr(reinterpret_cast<const void*>(vips_init), &library) == 0) return {};
  const std::string name = "vips-modules-" + std::to_string(vips_version(0)) + "." + std::to_string(vips_version(1));
  return std::filesystem::path(library.dli_fname).parent_path() / name;
}

}  // namespace

void KeepDecoderModulesOut() {
  // vips looks for modules below this folder.
  setenv("VIPSHOME", "/nonexistent", 1);
}

void LoadDecoderFor(int file) {
  std::array<char, 16> start{};
  const ssize_t length = pread(file, start.data(), start.size(), 0);
  const std::string_view bytes(start.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
  for (const DecoderModule& module : kModules) {
    if (bytes.size() < module.offset || !bytes.substr(module.offset).starts_with(module.signature)) continue;
    // Stays for as long as the job's process. Without it the file counts as one that is no image.
    static_cast<void>(g_module_open((ModuleFolder() / module.file).c_str(), G_MODULE_BIND_LAZY));
  }
}

}  // namespace tessaro::platform
