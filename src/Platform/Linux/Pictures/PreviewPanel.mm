#include "Platform/PreviewPanel.h"

#import <AppKit/AppKit.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Applications.h"
#include "Platform/Files.h"
#include "Platform/MainQueue.h"
#include "Platform/Pictures.h"

namespace platform = tessaro::platform;

// Arrow keys and buttons change the file; Return opens the file in its application; Escape, Space, and the end of the
// window below close the panel.
@interface TsPreviewPanel : NSPanel {
  Ref<NSArray> _paths;
  NSUInteger _index;
  platform::PreviewsClosed _closed;
  // Number of the file that is shown: a preview for an earlier one comes too late.
  std::uint64_t _turn;
  NSSize _openedSize;
  NSImageView* _imageView;
  NSTextField* _label;
  NSButton* _previous;
  NSButton* _next;
}

+ (TsPreviewPanel*)sharedPanel;

- (void)showPaths:(NSArray*)paths
            index:(NSUInteger)index
       overWindow:(NSWindow*)window
           closed:(platform::PreviewsClosed)closed;

- (IBAction)showPrevious:(id)sender;
- (IBAction)showNext:(id)sender;
- (IBAction)openFile:(id)sender;

@end

namespace {

constexpr CGFloat kBarHeight = 48;
constexpr CGFloat kMargin = 10;
constexpr CGFloat kButtonHeight = 28;
constexpr CGFloat kArrowWidth = 40;
constexpr CGFloat kOpenWidth = 80;
constexpr CGFloat kShareOfWindow = 0.8;
constexpr NSSize kLeastSize = {360, 280};
constexpr int kIconSize = 128;
constexpr unichar kEscape = 27;
NSString* const kFrameName = @"TsPreviewPanel";

Ref<NSButton> NewButton(NSRect frame, NSString* title, id target, SEL action) {
  auto button = Adopt([[NSButton alloc] initWithFrame:frame]);
  [button setTitle:title];
  [button setBezelStyle:NSRoundedBezelStyle];
  // Space and arrows belong to the panel.
  [button setRefusesFirstResponder:YES];
  [button setTarget:target];
  [button setAction:action];
  return button;
}

NSSize SizeOver(NSRect window) {
  return NSMakeSize(std::max(kLeastSize.width, window.size.width * kShareOfWindow),
                    std::max(kLeastSize.height, window.size.height * kShareOfWindow));
}

NSRect FrameOver(NSRect window, NSSize size) {
  return NSMakeRect(NSMidX(window) - size.width / 2, NSMidY(window) - size.height / 2, size.width, size.height);
}

// In place of a preview that can't be made.
NSImage* IconOf(NSString* path) {
  const std::string type = platform::ContentTypeOfExtension(TsStdString([path pathExtension]));
  const auto png = platform::IconOfContentType(type, kIconSize);
  if (png.empty()) return nil;
  return Adopt([[NSImage alloc] initWithData:[NSData dataWithBytes:png.data() length:png.size()]]).Autoreleased();
}

// An image that the decoder wrote, one point a pixel; nil when it can't be read.
NSImage* ImageOfPreview(const std::string& path) {
  auto image = Adopt([[NSImage alloc] initWithContentsOfFile:TsNSString(path)]);
  NSImageRep* pixels = [[image representations] lastObject];
  [image setSize:NSMakeSize(static_cast<CGFloat>([pixels pixelsWide]), static_cast<CGFloat>([pixels pixelsHigh]))];
  return image.Autoreleased();
}

}  // namespace

namespace tessaro::platform {

void ShowPreviews(NSWindow* window, const std::vector<std::string>& paths, std::size_t index, PreviewsClosed closed) {
  NSMutableArray* files = [NSMutableArray arrayWithCapacity:paths.size()];
  for (const std::string& path : paths) [files addObject:TsNSString(path)];
  [[TsPreviewPanel sharedPanel] showPaths:files
                                    index:index < paths.size() ? index : 0
                               overWindow:window
                                   closed:std::move(closed)];
}

}  // namespace tessaro::platform

@implementation TsPreviewPanel

+ (TsPreviewPanel*)sharedPanel {
  static Forever<Ref<TsPreviewPanel>> panel(Adopt<TsPreviewPanel>([[self alloc] init]));
  return panel->get();
}

- (instancetype)init {
  const NSUInteger style = NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask;
  self = [super initWithContentRect:NSMakeRect(0, 0, kLeastSize.width, kLeastSize.height)
                          styleMask:style
                            backing:NSBackingStoreBuffered
                              defer:YES];
  if (!self) return nil;
  [self setReleasedWhenClosed:NO];
  [self setHidesOnDeactivate:NO];
  [self setBecomesKeyOnlyIfNeeded:NO];
  [self setMinSize:kLeastSize];
  [self addContent:[self contentView]];
  return self;
}

- (void)addContent:(NSView*)view {
  const NSSize size = [view bounds].size;
  auto image =
      Adopt([[NSImageView alloc] initWithFrame:NSMakeRect(0, kBarHeight, size.width, size.height - kBarHeight)]);
  [image setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [image setImageScaling:NSImageScaleProportionallyDown];
  [image setEditable:NO];
  [view addSubview:image];
  _imageView = image;
  _previous = [self addButton:@"◀" at:kMargin width:kArrowWidth action:@selector(showPrevious:)];
  _next = [self addButton:@"▶" at:kMargin + kArrowWidth width:kArrowWidth action:@selector(showNext:)];
  NSButton* open = [self addButton:NSLocalizedString(@"Open", nil)
                                at:size.width - kMargin - kOpenWidth
                             width:kOpenWidth
                            action:@selector(openFile:)];
  [open setAutoresizingMask:NSViewMinXMargin | NSViewMaxYMargin];
  [open setKeyEquivalent:@"\r"];
  [self addLabelFrom:2 * kMargin + 2 * kArrowWidth to:NSMinX([open frame]) - kMargin];
}

- (void)addLabelFrom:(CGFloat)left to:(CGFloat)right {
  auto label = Adopt([[NSTextField alloc] initWithFrame:NSMakeRect(left, kMargin, right - left, kButtonHeight)]);
  [label setAutoresizingMask:NSViewWidthSizable | NSViewMaxYMargin];
  [label setEditable:NO];
  [label setSelectable:NO];
  [label setBezeled:NO];
  [label setBordered:NO];
  [label setDrawsBackground:NO];
  const CGFloat height = [[label cell] cellSize].height;
  [label setFrame:NSMakeRect(left, kMargin + std::floor((kButtonHeight - height) / 2), right - left, height)];
  [[self contentView] addSubview:label];
  _label = label;
}

- (NSButton*)addButton:(NSString*)title at:(CGFloat)left width:(CGFloat)width action:(SEL)action {
  auto button = NewButton(NSMakeRect(left, kMargin, width, kButtonHeight), title, self, action);
  [button setAutoresizingMask:NSViewMaxXMargin | NSViewMaxYMargin];
  [[self contentView] addSubview:button];
  return button.Autoreleased();
}

- (void)showPaths:(NSArray*)paths
            index:(NSUInteger)index
       overWindow:(NSWindow*)window
           closed:(platform::PreviewsClosed)closed {
  [self close];
  _paths = Retain(paths);
  _index = index;
  _closed = std::move(closed);
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(windowWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:window];
  const bool isRemembered = [self setFrameUsingName:kFrameName];
  _openedSize = isRemembered ? [self frame].size : SizeOver([window frame]);
  [self setFrame:FrameOver([window frame], _openedSize) display:NO];
  [self showFile];
  [self makeKeyAndOrderFront:nil];
}

- (void)windowWillClose:(NSNotification*)notification {
  [self close];
}

- (void)close {
  [super close];
  if (!_closed) return;
  // Only a size that the user has chosen.
  if (!NSEqualSizes([self frame].size, _openedSize)) [self saveFrameUsingName:kFrameName];
  [[NSNotificationCenter defaultCenter] removeObserver:self name:NSWindowWillCloseNotification object:nil];
  [_imageView setImage:nil];
  ++_turn;
  platform::MainQueue::Shared().Post(
      [closed = std::exchange(_closed, nullptr), last = TsStdString([self path])] { closed(last); });
}

- (NSString*)path {
  return [_paths objectAtIndex:_index];
}

// ---- The file

- (void)showFile {
  NSString* path = [self path];
  NSString* name = [path lastPathComponent];
  [self setTitle:name];
  [_label setStringValue:[NSString stringWithFormat:@"%@ (%lu/%lu)", name, static_cast<unsigned long>(_index + 1),
                                                    static_cast<unsigned long>([_paths count])]];
  [_previous setEnabled:_index > 0];
  [_next setEnabled:_index + 1 < [_paths count]];
  [_imageView setImage:nil];
  [self fetchPreviewOf:path];
}

- (void)fetchPreviewOf:(NSString*)path {
  const NSSize size = [_imageView bounds].size;
  const int pixels = static_cast<int>(std::max(size.width, size.height));
  const auto picture = std::make_shared<platform::TemporaryFile>(".png");
  platform::WritePreview(TsStdString(path), pixels, picture->path(),
                         [turn = ++_turn, picture](const Result<std::string>& written) {
                           [[TsPreviewPanel sharedPanel] takePreview:written turn:turn];
                         });
}

- (void)takePreview:(const Result<std::string>&)written turn:(std::uint64_t)turn {
  if (turn != _turn) return;
  NSImage* image = written ? ImageOfPreview(*written) : nil;
  if (image != nil) return [_imageView setImage:image];
  const std::string reason = written ? "its preview can't be read" : written.error().message;
  TsLogWarning(@"Couldn't show %@: %s", [self path], reason.c_str());
  [_imageView setImage:IconOf([self path])];
}

- (IBAction)showPrevious:(id)sender {
  if (_index == 0) return;
  --_index;
  [self showFile];
}

- (IBAction)showNext:(id)sender {
  if (_index + 1 >= [_paths count]) return;
  ++_index;
  [self showFile];
}

- (IBAction)openFile:(id)sender {
  if (!platform::OpenFile(TsStdString([self path]), {})) TsLogWarning(@"Couldn't open %@", [self path]);
}

// ---- Keys

- (BOOL)canBecomeKeyWindow {
  return YES;
}

- (void)keyDown:(NSEvent*)event {
  NSString* characters = [event charactersIgnoringModifiers];
  switch ([characters length] > 0 ? [characters characterAtIndex:0] : 0) {
    case NSLeftArrowFunctionKey:
    case NSUpArrowFunctionKey:
      return [self showPrevious:nil];
    case NSRightArrowFunctionKey:
    case NSDownArrowFunctionKey:
      return [self showNext:nil];
    case kEscape:
    case ' ':
      return [self close];
    default:
      return [super keyDown:event];
  }
}

@end
