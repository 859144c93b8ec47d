#include "Platform/Linux/Updates/AppImage.h"

#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include <algorithm>
#include <compare>
#include <cstring>
#include <optional>

#include "Platform/Common/FileDescriptor.h"
#include "Platform/Common/UpdateDecision.h"
#include "Platform/Linux/Base/Paths.h"

namespace tessaro::platform {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMagic = "AI";  // and the type's number
constexpr std::size_t kMagicOffset = 8;
constexpr std::string_view kVersionSection = ".tessaro.version";
#if defined(__x86_64__)
constexpr Elf64_Half kMachine = EM_X86_64;
#elif defined(__aarch64__)
constexpr Elf64_Half kMachine = EM_AARCH64;
#endif

bool Contains(const fs::path& folder, const fs::path& file) {
  std::error_code error;
  const fs::path outer = fs::canonical(folder, error);
  if (error) return false;
  const fs::path inner = fs::canonical(file, error);
  if (error) return false;
  return std::mismatch(outer.begin(), outer.end(), inner.begin(), inner.end()).first == outer.end();
}

template <typename Structure>
std::optional<Structure> ReadAt(std::string_view contents, std::uint64_t offset) {
  if (offset > contents.size() || contents.size() - offset < sizeof(Structure)) return std::nullopt;
  Structure structure;
  std::memcpy(&structure, contents.data() + offset, sizeof structure);
  return structure;
}

std::string_view SectionContents(std::string_view contents, const Elf64_Shdr& section) {
  if (section.sh_offset > contents.size()) return {};
  return contents.substr(section.sh_offset, section.sh_size);
}

std::string_view FindSection(std::string_view contents, const Elf64_Ehdr& header, std::string_view name) {
  const auto sectionAt = [&](std::uint64_t index) {
    return ReadAt<Elf64_Shdr>(contents, header.e_shoff + index * sizeof(Elf64_Shdr));
  };
  const auto nameTable = sectionAt(header.e_shstrndx);
  if (!nameTable) return {};
  const std::string_view names = SectionContents(contents, *nameTable);
  for (std::uint64_t i = 0; i < header.e_shnum; ++i) {
    const auto section = sectionAt(i);
    if (!section || section->sh_name >= names.size()) continue;
    const std::string_view itsName = names.substr(section->sh_name);
    if (itsName.substr(0, itsName.find('\0')) == name) return SectionContents(contents, *section);
  }
  return {};
}

// The version in the section of an AppImage; empty without the section. Fails for contents that are no AppImage, or one
// for another processor. The contents may be hostile.
Result<std::string> VersionInAppImage(std::string_view contents) {
  const auto header = ReadAt<Elf64_Ehdr>(contents, 0);
  const bool isProgram = header && std::memcmp(header->e_ident, ELFMAG, SELFMAG) == 0;
  if (!isProgram || contents.substr(kMagicOffset, kMagic.size()) != kMagic) return Fail("its file is no AppImage");
  if (header->e_ident[EI_CLASS] != ELFCLASS64 || header->e_machine != kMachine) {
    return Fail("its file is for another processor");
  }
  const std::string_view version = FindSection(contents, *header, kVersionSection);
  return std::string(version.substr(0, version.find_first_of(std::string_view("\0\r\n", 3))));
}

std::string VersionInFile(const fs::path& file) {
  const FileDescriptor descriptor(open(file.c_str(), O_RDONLY | O_CLOEXEC));
  struct stat status {};
  if (!descriptor || fstat(descriptor.get(), &status) != 0 || status.st_size == 0) return {};
  const auto size = static_cast<std::size_t>(status.st_size);
  void* mapped = mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor.get(), 0);
  if (mapped == MAP_FAILED) return {};
  auto version = VersionInAppImage({static_cast<const char*>(mapped), size});
  munmap(mapped, size);
  return version.value_or(std::string());
}

}  // namespace

fs::path AppImageOf(const fs::path& bundle) noexcept {
  // Programs started from an AppImage, such as a terminal, inherit these variables: compare the paths.
  const fs::path mounted = AbsolutePathIn("APPDIR");
  if (mounted.empty() || !Contains(mounted, bundle)) return {};
  const fs::path image = AbsolutePathIn("APPIMAGE");
  std::error_code error;
  return fs::is_regular_file(image, error) ? image : fs::path();
}

Result<void> CheckNewAppImage(std::string_view contents, std::string_view version, const fs::path& current) noexcept {
  const auto inside = VersionInAppImage(contents);
  if (!inside) return tl::unexpected(inside.error());
  if (inside->empty()) {
    if (VersionInFile(current).empty()) return {};
    return Fail("its file names no version");
  }
  if (std::is_eq(CompareVersions(*inside, version))) return {};
  return Fail("its file is version " + *inside);
}

}  // namespace tessaro::platform
