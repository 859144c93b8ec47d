#include "Platform/Pictures.h"

#import <QuickLookThumbnailing/QuickLookThumbnailing.h>

#include <algorithm>
#include <utility>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/TaskQueues.h"
#include "Platform/macOS/Guarded.h"
#include "Platform/macOS/PictureSource.h"

// Pictures by ImageIO; everything else by Quick Look's thumbnails, which come from processes of the system's own, on a
// queue of its own. Some kinds of files need the user's consent to their folder. Main thread only.
namespace tessaro::platform {

namespace {

constexpr std::chrono::seconds kLongestWait{10};

// One preview, whose answer is given once: by Quick Look, or when it takes too long.
class Job : public std::enable_shared_from_this<Job> {
 public:
  Job(std::string target, PictureWritten written) : target_(std::move(target)), written_(std::move(written)) {}

  API_AVAILABLE(macos(10.15)) void Start(const std::string& source, int size) {
    request_ = Adopt([[QLThumbnailGenerationRequest alloc] initWithFileAtURL:[NSURL fileURLWithPath:TsNSString(source)]
                                                                        size:NSMakeSize(size, size)
                                                                       scale:1
                                                         representationTypes:kQLThumbnailRepresentation]);
    auto job = shared_from_this();
    [[QLThumbnailGenerator sharedGenerator]
        generateBestRepresentationForRequest:static_cast<QLThumbnailGenerationRequest*>(request_.get())
                           completionHandler:^(QLThumbnailRepresentation* preview, NSError* error) {
                             job->Receive(preview != nil ? WritePNG(job->target_, [preview CGImage])
                                                         : Result<std::string>(Fail(ReasonOf(error))));
                           }];
    MainQueue::Shared().PostDelayed(kLongestWait, [job] { job->GiveUp(); });
  }

  void Receive(Result<std::string> result) {
    MainQueue::Shared().Post([job = shared_from_this(), result = std::move(result)] { job->Answer(result); });
  }

 private:
  static constexpr NSUInteger kQLThumbnailRepresentation = 1 << 2;

  void GiveUp() {
    if (written_ == nullptr) return;
    if (@available(macOS 10.15, *))
      [[QLThumbnailGenerator sharedGenerator] cancelRequest:static_cast<QLThumbnailGenerationRequest*>(request_.get())];
    Answer(Fail("the preview takes too long"));
  }

  void Answer(const Result<std::string>& result) {
    if (const PictureWritten written = std::exchange(written_, nullptr)) written(result);
  }

  const std::string target_;
  PictureWritten written_;
  Ref<NSObject> request_;
};

Result<std::string> WritePictureOf(const PictureSource& source, int size, const std::string& target) {
  const CFRef<CGImageRef> frame = source.Frame(0, SizeWithin(source.size(), size, size), true);
  return frame ? WritePNG(target, frame.get()) : Result<std::string>(Fail("the picture is damaged"));
}

}  // namespace

void WritePreview(const std::string& source, int size, const std::string& target, PictureWritten written) noexcept {
  auto job = std::make_shared<Job>(target, std::move(written));
  BackgroundQueue::Shared().Post([job, source, size, target] {
    const PictureSource picture(source);
    if (picture.failure().empty()) return job->Receive(WritePictureOf(picture, size, target));
    MainQueue::Shared().Post([job, source, size] {
      const std::string failure = Guarded([&] { job->Start(source, size); });
      if (!failure.empty()) job->Receive(Fail(failure));
    });
  });
}

}  // namespace tessaro::platform
