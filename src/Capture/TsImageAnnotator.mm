#import "Capture/TsImageAnnotator.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Capture/TsAnnotationView.h"
#import "Extensions/NSString+TsPath.h"
#include "Images/TsImages.h"
#include "Platform/Files.h"
#include "Platform/MainQueue.h"
#include "Platform/Pictures.h"
#include "Platform/WindowServer.h"
#include "Utilities/Controls.h"
#include "Utilities/TsNotificationObserver.h"

namespace platform = tessaro::platform;

namespace {

// The window server refuses larger images.
constexpr int kLargestSide = 6000;
constexpr CGFloat kBarHeight = kTsRowHeight + 2 * kTsMargin;
constexpr CGFloat kShareOfScreen = 0.85;
constexpr NSSize kLeastSize = {660, 360};

struct Tool {
  Annotation::Kind kind;
  NSString* name;
};
const std::array kTools = {Tool{Annotation::Kind::Arrow, @"Arrow"}, Tool{Annotation::Kind::Box, @"Box"},
                           Tool{Annotation::Kind::Text, @"Text"}, Tool{Annotation::Kind::Blur, @"Blur"}};

void Announce(NSString* original, NSString* copy, const TsCompletion& completion) {
  NSMutableDictionary* userInfo = [NSMutableDictionary dictionaryWithObject:original forKey:@"original"];
  if (copy != nil) [userInfo setObject:copy forKey:@"path"];
  TsPost(@"TsImageAnnotated", nil, userInfo);
  completion(copy);
}

NSString* PathOfCopy(NSString* path) {
  NSString* extension = [path pathExtension];
  NSString* name = [[path stringByDeletingPathExtension] stringByAppendingString:@" annotated"];
  return [[name stringByAppendingPathExtension:[extension length] > 0 ? extension : @"png"] ts_makeUniquePath];
}

// The copy is a PNG if the format can't be written.
NSString* WritablePathOfCopy(NSString* path) {
  NSArray* writable = @[ @"png", @"jpg", @"jpeg", @"gif", @"webp", @"tif", @"tiff" ];
  if ([writable containsObject:[[path pathExtension] lowercaseString]]) return PathOfCopy(path);
  return PathOfCopy([path stringByAppendingPathExtension:@"png"]);
}

NSSize ContentSizeFor(NSSize image) {
  const NSSize screen = [[NSScreen mainScreen] visibleFrame].size;
  const CGFloat scale = std::min({static_cast<CGFloat>(1), screen.width * kShareOfScreen / image.width,
                                  (screen.height * kShareOfScreen - kBarHeight) / image.height});
  return NSMakeSize(std::max(kLeastSize.width, image.width * scale),
                    std::max(kLeastSize.height, image.height * scale + kBarHeight));
}

}  // namespace

// The editor's window and its owner, which lives as long as the window is open.
@interface TsImageAnnotator : NSObject {
  Ref<NSString> _path;
  TsCompletion _completion;
  // A panel, because a window would get a main menu of its own.
  Ref<NSPanel> _window;
  TsAnnotationView* _canvas;
  Ref<NSArray> _toolButtons;
  NSButton* _undoButton;
}

- (instancetype)initWithPath:(NSString*)path image:(NSImage*)image completion:(const TsCompletion&)completion;
@end

static NSMutableSet* OpenAnnotators() {
  static Forever<Ref<NSMutableSet>> annotators(Adopt<NSMutableSet>([[NSMutableSet alloc] init]));
  return annotators->get();
}

static void OpenAnnotator(NSString* path, const Result<std::string>& picture, const TsCompletion& completion) {
  NSImage* image = picture ? TsImageOfFile(*picture) : nil;
  if (image == nil) {
    const std::string reason = picture ? "the decoded image can't be read" : picture.error().message;
    TsLogWarning(@"Couldn't annotate %@: %s", path, reason.c_str());
    return Announce(path, nil, completion);
  }
  auto annotator = Adopt([[TsImageAnnotator alloc] initWithPath:path image:image completion:completion]);
  [OpenAnnotators() addObject:annotator];
}

void TsAnnotateImage(NSString* path, const TsCompletion& completion) {
  const auto decoded = std::make_shared<platform::TemporaryFile>(".png");
  platform::ScaleImage({TsStdString(path), decoded->path(), kLargestSide, kLargestSide},
                       [source = Retain(path), decoded, completion](const Result<std::string>& picture) {
                         if (platform::IsWindowServerAvailable()) return OpenAnnotator(source, picture, completion);
                         TsLogWarning(@"annotateImage needs a window server, and none is available");
                         Announce(source, nil, completion);
                       });
}

// Writes the edited image in the format of the original.
static void Save(NSData* image, NSString* original, const TsCompletion& completion) {
  const auto drawn = std::make_shared<platform::TemporaryFile>(".tiff");
  const std::string_view bytes(static_cast<const char*>([image bytes]), [image length]);
  const auto written = platform::ReplaceTransientFile(drawn->path(), bytes);
  // The scaling fails on the empty file, and says which.
  if (!written) TsLogWarning(@"Couldn't write %s: %s", drawn->path().c_str(), written.error().message.c_str());
  platform::ScaleImage({drawn->path(), TsStdString(WritablePathOfCopy(original)), 0, 0},
                       [original = Retain(original), drawn, completion](const Result<std::string>& copy) {
                         if (!copy) TsLogWarning(@"Couldn't save %@: %s", original.get(), copy.error().message.c_str());
                         Announce(original, copy ? TsNSString(*copy) : nil, completion);
                       });
}

@implementation TsImageAnnotator

- (instancetype)initWithPath:(NSString*)path image:(NSImage*)image completion:(const TsCompletion&)completion {
  self = [super init];
  if (!self) return nil;
  _path = Retain(path);
  _completion = completion;
  const NSSize size = ContentSizeFor([image size]);
  const NSUInteger style = NSTitledWindowMask | NSClosableWindowMask | NSResizableWindowMask;
  _window = Adopt([[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                                             styleMask:style
                                               backing:NSBackingStoreBuffered
                                                 defer:NO]);
  [_window setReleasedWhenClosed:NO];
  [_window setHidesOnDeactivate:NO];
  [_window setBecomesKeyOnlyIfNeeded:NO];
  [_window setTitle:[path lastPathComponent]];
  [_window setMinSize:kLeastSize];
  [_window setDelegate:static_cast<id>(self)];
  [self addContentWithImage:image];
  [_window center];
  [_window makeKeyAndOrderFront:nil];
  return self;
}

- (void)dealloc {
  [_window setDelegate:nil];
  [super dealloc];
}

- (void)addContentWithImage:(NSImage*)image {
  NSView* view = [_window contentView];
  const NSSize size = [view bounds].size;
  auto canvas = Adopt([[TsAnnotationView alloc] initWithFrame:NSMakeRect(0, 0, size.width, size.height - kBarHeight)
                                                        image:image
                                                      changed:[self] { [self showState]; }]);
  [canvas setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
  [view addSubview:canvas];
  _canvas = canvas;
  TsRows rows(view);
  TsRow row = rows.FromTop();
  [self addToolsTo:row];
  const auto undo = [self newButton:@"Undo" action:@selector(undo:) key:@"z"];
  [undo setKeyEquivalentModifierMask:NSCommandKeyMask];
  row.AddLeft(undo);
  _undoButton = undo;
  const auto save = [self newButton:@"Save" action:@selector(save:) key:@"\r"];
  const auto cancel = [self newButton:@"Cancel" action:@selector(cancel:) key:@"\e"];
  row.AddRight(save);
  row.AddRight(cancel);
  [_window recalculateKeyViewLoop];
  [_window setInitialFirstResponder:canvas];
  [self showState];
}

- (void)addToolsTo:(TsRow&)row {
  NSMutableArray* buttons = [NSMutableArray array];
  for (std::size_t i = 0; i < kTools.size(); ++i) {
    // Command-1 and so on.
    NSString* key = [NSString stringWithFormat:@"%lu", static_cast<unsigned long>(i + 1)];
    const auto button = [self newButton:kTools[i].name action:@selector(chooseTool:) key:key];
    [button setKeyEquivalentModifierMask:NSCommandKeyMask];
    [button setButtonType:NSPushOnPushOffButton];
    [button setTag:static_cast<NSInteger>(i)];
    row.AddLeft(button);
    [buttons addObject:button];
  }
  _toolButtons = Retain<NSArray>(buttons);
}

- (Ref<NSButton>)newButton:(NSString*)title action:(SEL)action key:(NSString*)key {
  return TsNewButton(NSLocalizedString(title, nil), self, action, key);
}

- (void)showState {
  for (NSButton* button in _toolButtons.get()) {
    [button setState:kTools[[button tag]].kind == [_canvas tool] ? NSOnState : NSOffState];
  }
  [_undoButton setEnabled:[_canvas canUndo]];
}

- (IBAction)chooseTool:(id)sender {
  [_canvas endText];
  [_canvas setTool:kTools[[sender tag]].kind];
  [self showState];
}

- (IBAction)undo:(id)sender {
  [_canvas endText];
  [_canvas undo];
}

- (IBAction)save:(id)sender {
  Save([_canvas annotatedImage], _path, std::exchange(_completion, nullptr));
  [_window close];
}

- (IBAction)cancel:(id)sender {
  [_window close];
}

- (void)windowWillClose:(NSNotification*)notification {
  // The window, and perhaps one of its buttons, is in the middle of an event.
  platform::MainQueue::Shared().Post([self, path = _path, completion = std::exchange(_completion, nullptr)] {
    [OpenAnnotators() removeObject:self];
    if (completion) Announce(path, nil, completion);
  });
}

@end
