#import "Capture/TsScreenRecorder.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <utility>
#include <vector>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Images/TsImages.h"
#include "Platform/MainQueue.h"
#include "Platform/WindowServer.h"
#include "Utilities/Controls.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

// Covers the main display with its own picture, on which the user drags a rectangle.
@interface TsAreaSelection : NSPanel {
  std::function<void(tessaro::platform::ScreenArea)> _chosen;
}

// `chosen` is called once; after a mere click, or Escape, with an area without a size.
- (instancetype)initWithPicture:(const tessaro::platform::ScreenPicture&)picture
                         chosen:(std::function<void(tessaro::platform::ScreenArea)>)chosen;

@end

namespace {

constexpr CGFloat kLeastSide = 16;
constexpr CGFloat kShade = 0.45;
constexpr unichar kEscape = 27;

NSRect MainDisplay() { return [[[NSScreen screens] objectAtIndex:0] frame]; }

// In points, as the display shows it.
Ref<NSImage> ImageOf(const platform::ScreenPicture& picture) {
  auto pixels = Adopt([[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                              pixelsWide:picture.width
                                                              pixelsHigh:picture.height
                                                           bitsPerSample:8
                                                         samplesPerPixel:3
                                                                hasAlpha:NO
                                                                isPlanar:NO
                                                          colorSpaceName:NSDeviceRGBColorSpace
                                                             bytesPerRow:picture.width * 3
                                                            bitsPerPixel:24]);
  std::memcpy([pixels bitmapData], picture.rgb.data(), picture.rgb.size());
  auto image = Adopt([[NSImage alloc] initWithSize:MainDisplay().size]);
  [pixels setSize:[image size]];
  [image addRepresentation:pixels];
  return image;
}

using namespace std::chrono_literals;

constexpr NSSize kPanelSize = {400, 96};
constexpr CGFloat kButtonWidth = 116;
// A window disappears from the screen a moment after it has been closed.
constexpr auto kUncovering = 400ms;

NSString* FilmPath(NSString* folder) {
  auto format = Adopt([[NSDateFormatter alloc] init]);
  [format setDateFormat:@"yyyy-MM-dd 'at' HH.mm.ss"];
  NSString* name = [NSString stringWithFormat:@"Screen Recording %@%s", [format stringFromDate:[NSDate date]],
                                              platform::ScreenRecording::FilmExtension().c_str()];
  return [[folder stringByAppendingPathComponent:name] ts_makeUniquePath];
}

void Announce(NSString* film, const TsCompletion& completion) {
  NSDictionary* userInfo = film != nil ? @{@"path" : film} : @{};
  TsPost(@"TsScreenRecorded", nil, userInfo);
  completion(film);
}

// Why no recording can begin; nil when one can.
NSString* Objection(NSString* folder) {
  if (!platform::IsWindowServerAvailable()) return @"there is no window server";
  if ([[TsScreenRecorder sharedRecorder] isBusy]) return @"another recording is under way";
  return TsMakeFolder(folder) ? nil : @"there is no folder for it";
}

}  // namespace

@interface TsAreaSelectionView : NSView {
  Ref<NSImage> _screen;
  NSPoint _start;
  NSRect _area;
  std::function<void(NSRect)> _chosen;
}
- (instancetype)initWithScreen:(NSImage*)screen chosen:(std::function<void(NSRect)>)chosen;
@end

@implementation TsAreaSelectionView

- (instancetype)initWithScreen:(NSImage*)screen chosen:(std::function<void(NSRect)>)chosen {
  const NSSize size = [screen size];
  self = [super initWithFrame:NSMakeRect(0, 0, size.width, size.height)];
  if (!self) return nil;
  _screen = Retain(screen);
  _chosen = std::move(chosen);
  return self;
}

- (BOOL)acceptsFirstMouse:(NSEvent*)event {
  return YES;
}

- (void)drawRect:(NSRect)dirty {
  [_screen drawInRect:[self bounds] fromRect:NSZeroRect operation:NSCompositeCopy fraction:1];
  [[NSColor colorWithCalibratedWhite:0 alpha:kShade] set];
  NSRectFillUsingOperation([self bounds], NSCompositeSourceOver);
  if (NSIsEmptyRect(_area)) return;
  [_screen drawInRect:_area fromRect:_area operation:NSCompositeCopy fraction:1];
  [[NSColor whiteColor] set];
  NSFrameRect(NSInsetRect(_area, -1, -1));
}

- (void)mouseDown:(NSEvent*)event {
  _start = [self convertPoint:[event locationInWindow] fromView:nil];
  _area = NSZeroRect;
}

- (void)mouseDragged:(NSEvent*)event {
  const NSPoint end = [self convertPoint:[event locationInWindow] fromView:nil];
  const NSRect area = NSMakeRect(std::min(_start.x, end.x), std::min(_start.y, end.y), std::abs(end.x - _start.x),
                                 std::abs(end.y - _start.y));
  _area = NSIntersectionRect(NSIntegralRect(area), [self bounds]);
  [self setNeedsDisplay:YES];
}

- (void)mouseUp:(NSEvent*)event {
  [self mouseDragged:event];
  _chosen(NSWidth(_area) >= kLeastSide && NSHeight(_area) >= kLeastSide ? _area : NSZeroRect);
}

@end

@implementation TsAreaSelection

- (instancetype)initWithPicture:(const platform::ScreenPicture&)picture
                         chosen:(std::function<void(platform::ScreenArea)>)chosen {
  self = [super initWithContentRect:MainDisplay()
                          styleMask:NSBorderlessWindowMask
                            backing:NSBackingStoreBuffered
                              defer:NO];
  if (!self) return nil;
  [self setReleasedWhenClosed:NO];
  [self setLevel:NSScreenSaverWindowLevel];
  [self setHidesOnDeactivate:NO];
  _chosen = std::move(chosen);
  const auto image = ImageOf(picture);
  const CGFloat height = [image size].height;
  auto view = Adopt([[TsAreaSelectionView alloc]
      initWithScreen:image
              chosen:[self, height](NSRect area) {
                [self choose:{0, NSMinX(area), height - NSMaxY(area), NSWidth(area), NSHeight(area)}];
              }]);
  [self setContentView:view];
  return self;
}

- (void)choose:(const platform::ScreenArea&)area {
  [self orderOut:nil];
  if (const auto chosen = std::exchange(_chosen, nullptr)) chosen(area);
}

- (BOOL)canBecomeKeyWindow {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  NSString* characters = [event characters];
  if ([characters length] > 0 && [characters characterAtIndex:0] == kEscape) return [self choose:{}];
  [super keyDown:event];
}

@end

void TsTakeScreenRecording(NSString* folder, const TsCompletion& completion) {
  NSString* objection = Objection(folder);
  if (objection == nil) return [[TsScreenRecorder sharedRecorder] recordInto:folder completion:completion];
  TsLogWarning(@"Couldn't record the screen: %@", objection);
  platform::MainQueue::Shared().Post([completion] { Announce(nil, completion); });
}

@implementation TsScreenRecorder

+ (TsScreenRecorder*)sharedRecorder {
  static Forever<Ref<TsScreenRecorder>> recorder(Adopt<TsScreenRecorder>([[self alloc] init]));
  return recorder->get();
}

// Some window managers change the height of a panel that is shown again, so each stage has a panel of its own.
- (void)openPanel {
  [self closePanel];
  _panel = Adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, kPanelSize.width, kPanelSize.height)
                                            styleMask:NSTitledWindowMask | NSClosableWindowMask
                                              backing:NSBackingStoreBuffered
                                                defer:YES]);
  [_panel setReleasedWhenClosed:NO];
  [_panel setHidesOnDeactivate:NO];
  [_panel setBecomesKeyOnlyIfNeeded:NO];
  [_panel setLevel:NSFloatingWindowLevel];
  [_panel setTitle:NSLocalizedString(@"Screen Recording", nil)];
  [_panel setDelegate:static_cast<id>(self)];
  const auto label = TsNewLabel(@"");
  TsRows rows([_panel contentView]);
  rows.FromTop().Fill(label);
  _label = label;
}

- (void)closePanel {
  [_panel setDelegate:nil];
  [_panel orderOut:nil];
  // The panel may be in the middle of the event that closed it.
  platform::MainQueue::Shared().Post([panel = std::exchange(_panel, nullptr)]() mutable { panel = nullptr; });
  _label = nil;
  _stopButton = nil;
}

- (void)addButtons:(const std::vector<Ref<NSButton>>&)buttons {
  TsRows rows([_panel contentView]);
  TsRow row = rows.FromBottom();
  for (const auto& button : buttons) row.AddLeft(button);
}

- (Ref<NSButton>)newButton:(NSString*)title action:(SEL)action key:(NSString*)key {
  return TsNewButton(NSLocalizedString(title, nil), self, action, key, kButtonWidth);
}

- (BOOL)isBusy {
  return _completion != nullptr;
}

- (void)recordInto:(NSString*)folder completion:(const TsCompletion&)completion {
  _folder = Retain(folder);
  _completion = completion;
  platform::RequestScreenAccess([self](const Result<void>& access) {
    if (access) return [self ask];
    [self endWithFailure:access.error()];
  });
}

- (void)ask {
  [self openPanel];
  [_label setStringValue:NSLocalizedString(@"What do you want to record?", nil)];
  [self addButtons:{
    [self newButton:@"Whole Screen" action:@selector(recordScreen:) key:@"\r"],
        [self newButton:@"Area…" action:@selector(recordArea:) key:@""],
        [self newButton:@"Cancel" action:@selector(cancel:) key:@"\e"]
  }];
  [_panel center];
  [_panel makeKeyAndOrderFront:nil];
}

// ---- The area

- (IBAction)recordScreen:(id)sender {
  [self record:{}];
}

- (IBAction)recordArea:(id)sender {
  [self closePanel];
  platform::MainQueue::Shared().PostDelayed(kUncovering, [self] { [self chooseArea]; });
}

- (void)chooseArea {
  platform::CaptureDisplay(0, [self](const Result<platform::ScreenPicture>& picture) {
    if (!picture) return [self endWithFailure:picture.error()];
    [self chooseAreaOf:*picture];
  });
}

- (void)chooseAreaOf:(const platform::ScreenPicture&)picture {
  _selection = Adopt([[TsAreaSelection alloc]
      initWithPicture:picture
               chosen:[self](platform::ScreenArea area) {
                 // The window is in the middle of the event.
                 platform::MainQueue::Shared().Post([self, area] { [self areaIsChosen:area]; });
               }]);
  [_selection makeKeyAndOrderFront:nil];
}

- (void)areaIsChosen:(const platform::ScreenArea&)area {
  _selection = nullptr;
  if (area.width == 0) return [self ask];
  [self record:area];
}

// ---- The film

- (void)record:(const platform::ScreenArea&)area {
  _film = Retain(FilmPath(_folder));
  _recording = platform::ScreenRecording::Start(TsStdString(_film), area,
                                                [self](const Result<void>& film) { [self recordingHasEnded:film]; });
  _began = [NSDate timeIntervalSinceReferenceDate];
  _clock = Retain([NSTimer scheduledTimerWithTimeInterval:1
                                                   target:self
                                                 selector:@selector(showTime:)
                                                 userInfo:nil
                                                  repeats:YES]);
  [self openPanel];
  const auto stop = [self newButton:@"Stop" action:@selector(stop:) key:@"\r"];
  [self addButtons:{stop}];
  _stopButton = stop;
  [self showTime:nil];
  [self moveAside];
  [_panel orderFront:nil];
}

// To a corner where the panel hides little.
- (void)moveAside {
  const NSRect screen = [[NSScreen mainScreen] visibleFrame];
  [_panel setFrameOrigin:NSMakePoint(NSMaxX(screen) - NSWidth([_panel frame]) - kTsMargin, NSMinY(screen) + kTsMargin)];
}

- (void)showTime:(NSTimer*)timer {
  const auto seconds = static_cast<int>([NSDate timeIntervalSinceReferenceDate] - _began);
  [_label setStringValue:[NSString stringWithFormat:@"%@ %d:%02d", NSLocalizedString(@"Recording", nil), seconds / 60,
                                                    seconds % 60]];
}

- (IBAction)stop:(id)sender {
  [_clock invalidate];
  [_stopButton setEnabled:NO];
  [_label setStringValue:NSLocalizedString(@"Saving…", nil)];
  if (_recording) _recording->Stop();
}

- (void)recordingHasEnded:(const Result<void>&)film {
  _recording.reset();
  if (film) return [self endWithFilm:_film];
  [self endWithFailure:film.error()];
}

- (void)endWithFailure:(const Failure&)failure {
  TsLogWarning(@"Couldn't record the screen: %s", failure.message.c_str());
  [self endWithFilm:nil];
}

- (IBAction)cancel:(id)sender {
  [self endWithFilm:nil];
}

- (void)endWithFilm:(NSString*)film {
  [_clock invalidate];
  _clock = nullptr;
  [self closePanel];
  if (!_completion) return;
  const auto path = Retain(film);
  platform::MainQueue::Shared().Post(
      [path, completion = std::exchange(_completion, nullptr)] { Announce(path, completion); });
}

- (BOOL)windowShouldClose:(id)sender {
  if (_recording) {
    [self stop:nil];
  } else {
    [self cancel:nil];
  }
  return NO;
}

@end
