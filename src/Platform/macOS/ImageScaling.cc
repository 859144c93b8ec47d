#include "Platform/Pictures.h"

#include <filesystem>
#include <fstream>
#include <iterator>

#include "Platform/Files.h"
#include "Platform/MainQueue.h"
#include "Platform/TaskQueues.h"
#include "Platform/macOS/PictureSource.h"

// ImageIO on a background thread of this process: the system updates its decoders, and keeps them in no process of
// their own. It reads WebP and does not write it. A job that takes longer than its deadline goes on to its end,
// unheard. No consent.
namespace tessaro::platform {

namespace {

constexpr std::chrono::seconds kLongestWait{2};

Result<std::string> CopyUnchanged(const std::string& source, const std::string& target) {
  std::ifstream file(source, std::ios::binary);
  const std::string contents(std::istreambuf_iterator<char>(file), {});
  if (!file) return Fail("the picture can't be read");
  return ReplaceFile(target, contents, NewFile::AsUsual).map([&] { return target; });
}

Result<std::string> MakeCopy(const ImageCopy& copy) {
  const PictureSource source(copy.source);
  if (!source.failure().empty()) return Fail(source.failure());
  const PictureTarget target =
      PictureTargetOf(copy.source, copy.target, source.format(), source.isPhoto(), WebP::ReadOnly);
  const PictureSize size = SizeWithin(source.size(), copy.maxWidth, copy.maxHeight);
  if (size == source.size() && target.format->name == source.format()) return CopyUnchanged(copy.source, target.path);
  return WritePicture(target.path, *target.format, source, size, target.format->hasFrames ? source.frames() : 1);
}

}  // namespace

Result<std::string> ScaleImage(const ImageCopy& copy) noexcept {
  auto result =
      WithDeadline<Result<std::string>>(BackgroundQueue::Shared(), kLongestWait, [copy] { return MakeCopy(copy); });
  if (!result) return Fail("the picture takes too long");
  return std::move(*result);
}

void ScaleImage(const ImageCopy& copy, PictureWritten written) noexcept {
  BackgroundQueue::Shared().Post([copy, written = std::move(written)] {
    MainQueue::Shared().Post([result = MakeCopy(copy), written] { written(result); });
  });
}

}  // namespace tessaro::platform
