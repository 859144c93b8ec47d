#include "Platform/ScreenRecording.h"

#import <AVFoundation/AVFoundation.h>

#include <array>
#include <utility>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"
#include "Platform/macOS/CFRef.h"
#include "Platform/macOS/Guarded.h"

// Films by AVFoundation's screen input, which writes QuickTime files; pictures by Core Graphics (deprecated in 14.4).
// The user consents in System Settings, and may have to restart the application; without that, pictures show the
// desktop's background only. Main thread only; AVFoundation reports on a queue of its own.
@interface TsFilm : NSObject <AVCaptureFileOutputRecordingDelegate> {
  tessaro::platform::ScreenRecording::Ended _ended;
}
- (instancetype)initWithEnded:(tessaro::platform::ScreenRecording::Ended)ended;
@end

@implementation TsFilm

- (instancetype)initWithEnded:(tessaro::platform::ScreenRecording::Ended)ended {
  self = [super init];
  if (self != nil) _ended = std::move(ended);
  return self;
}

- (void)captureOutput:(AVCaptureFileOutput*)output
    didFinishRecordingToOutputFileAtURL:(NSURL*)url
                        fromConnections:(NSArray*)connections
                                  error:(NSError*)error {
  // A film that has reached its longest time comes with an error, and is complete.
  NSNumber* isComplete = [[error userInfo] objectForKey:AVErrorRecordingSuccessfullyFinishedKey];
  Result<void> film;
  if (error != nil && ![isComplete boolValue]) film = Fail(tessaro::platform::ReasonOf(error));
  tessaro::platform::MainQueue::Shared().Post([ended = _ended, film = std::move(film)] { ended(film); });
}

@end

namespace tessaro::platform {

namespace {

constexpr std::int64_t kLongestFilm = 3600;  // seconds
constexpr std::size_t kMostDisplays = 16;

std::optional<CGDirectDisplayID> Display(int number) {
  std::array<CGDirectDisplayID, kMostDisplays> displays{};
  std::uint32_t count = 0;
  // The main one comes first.
  if (CGGetActiveDisplayList(kMostDisplays, displays.data(), &count) != kCGErrorSuccess) return std::nullopt;
  if (number < 0 || static_cast<std::uint32_t>(number) >= count) return std::nullopt;
  return displays[static_cast<std::size_t>(number)];
}

// Three bytes a pixel of the four that a bitmap has.
ScreenPicture PictureOf(CGImageRef image) {
  const std::size_t width = CGImageGetWidth(image);
  const std::size_t height = CGImageGetHeight(image);
  std::vector<std::uint8_t> pixels(width * height * 4);
  const CFRef<CGColorSpaceRef> space(CGColorSpaceCreateWithName(kCGColorSpaceSRGB));
  const CFRef<CGContextRef> context(
      CGBitmapContextCreate(pixels.data(), width, height, 8, width * 4, space.get(), kCGImageAlphaNoneSkipLast));
  if (!context) return {};
  CGContextDrawImage(context.get(), CGRectMake(0, 0, static_cast<CGFloat>(width), static_cast<CGFloat>(height)), image);
  ScreenPicture picture{static_cast<int>(width), static_cast<int>(height), {}};
  picture.rgb.reserve(width * height * 3);
  for (std::size_t i = 0; i < pixels.size(); i += 4) {
    picture.rgb.insert(picture.rgb.end(), pixels.begin() + static_cast<std::ptrdiff_t>(i),
                       pixels.begin() + static_cast<std::ptrdiff_t>(i + 3));
  }
  return picture;
}

Result<ScreenPicture> Capture(int number) {
  const auto display = Display(number);
  if (!display) return Fail("there is no such display");
  const CFRef<CGImageRef> image(CGDisplayCreateImage(*display));
  ScreenPicture picture = image ? PictureOf(image.get()) : ScreenPicture();
  if (picture.rgb.empty()) return Fail("the system gives no picture of the display");
  return picture;
}

class SystemRecording final : public ScreenRecording {
 public:
  SystemRecording(CGDirectDisplayID display, const ScreenArea& area, Ended ended)
      : session_(Adopt([[AVCaptureSession alloc] init])),
        output_(Adopt([[AVCaptureMovieFileOutput alloc] init])),
        film_(Adopt([[TsFilm alloc] initWithEnded:std::move(ended)])) {
    const auto input = Adopt([[AVCaptureScreenInput alloc] initWithDisplayID:display]);
    if (area.width > 0 && area.height > 0) {
      // Counted from the lower left corner.
      const CGFloat bottom = CGDisplayBounds(display).size.height - area.y - area.height;
      [input setCropRect:CGRectMake(area.x, bottom, area.width, area.height)];
    }
    isUsable_ = [session_ canAddInput:input] && [session_ canAddOutput:output_];
    if (!isUsable_) return;
    [session_ addInput:input];
    [session_ addOutput:output_];
    [output_ setMaxRecordedDuration:CMTimeMake(kLongestFilm, 1)];
  }

  ~SystemRecording() override { [session_ stopRunning]; }

  [[nodiscard]] bool Begin(const std::string& path) {
    if (!isUsable_) return false;
    [session_ startRunning];
    [output_ startRecordingToOutputFileURL:[NSURL fileURLWithPath:TsNSString(path)] recordingDelegate:film_];
    return true;
  }

  void Stop() noexcept override { [output_ stopRecording]; }

 private:
  Ref<AVCaptureSession> session_;
  Ref<AVCaptureMovieFileOutput> output_;
  Ref<TsFilm> film_;
  bool isUsable_ = false;
};

}  // namespace

void RequestScreenAccess(std::function<void(const Result<void>& access)> answer) noexcept {
  Result<void> access;
  // The request opens a dialog, and answers before the user does.
  if (!CGPreflightScreenCaptureAccess() && !CGRequestScreenCaptureAccess())
    access = Fail("the user has not allowed screen recording in System Settings");
  MainQueue::Shared().Post([answer = std::move(answer), access = std::move(access)] { answer(access); });
}

void CaptureDisplay(int display, std::function<void(const Result<ScreenPicture>& picture)> captured) noexcept {
  MainQueue::Shared().Post([display, captured = std::move(captured)] { captured(Capture(display)); });
}

std::string ScreenRecording::FilmExtension() noexcept { return ".mov"; }

std::unique_ptr<ScreenRecording> ScreenRecording::Start(const std::string& path, const ScreenArea& area,
                                                        Ended ended) noexcept {
  std::unique_ptr<SystemRecording> recording;
  const auto display = Display(area.display);
  std::string failure = display ? "" : "there is no such display";
  if (display) {
    failure = Guarded([&] {
      recording = std::make_unique<SystemRecording>(*display, area, ended);
      if (!recording->Begin(path)) failure = "the system records no screen";
    });
  }
  if (failure.empty()) return recording;
  MainQueue::Shared().Post([ended, failure] { ended(Fail(failure)); });
  return nullptr;
}

}  // namespace tessaro::platform
