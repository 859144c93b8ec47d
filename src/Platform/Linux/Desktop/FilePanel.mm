#include "Platform/FilePanel.h"

#import <AppKit/AppKit.h>
#import <GNUstepGUI/GSDisplayServer.h>

#include <cstdio>
#include <memory>
#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Linux/Desktop/FilePortal.h"
#include "Platform/MainQueue.h"

using namespace tessaro::platform;

// The part of -runModalForDirectory:file: before its modal loop.
@interface NSSavePanel (TsSetup)
- (void)_setupForDirectory:(NSString*)path file:(NSString*)name;
@end

// A dialog that is open over a window: the portal's, or GNUstep's where the portal has none. GNUstep has one panel of
// each kind; it is shown without a modal loop, which would stop script.
@interface TsFileSession : NSObject {
  Ref<NSWindow> _window;
  FileRequest _request;
  FileAnswer _answer;
  std::shared_ptr<void> _portal;
  Ref<NSSavePanel> _panel;
  NSModalSession _modalSession;
  BOOL _isAccepted;
  BOOL _hasLostKeyboard;
}

- (instancetype)initWithWindow:(NSWindow*)window request:(FileRequest)request answer:(FileAnswer)answer;
- (NSWindow*)window;
- (void)open;

@end

namespace {

NSMutableArray* Sessions() {
  static Forever<Ref<NSMutableArray>> sessions(Adopt([[NSMutableArray alloc] init]));
  return *sessions;
}

bool HasSession(NSWindow* window) {
  for (TsFileSession* session in Sessions()) {
    if ([session window] == window) return true;
  }
  return false;
}

// The X window as a portal's parent window identifier.
std::string PortalHandleOf(NSWindow* window) {
  void* device = [GSServerForWindow(window) windowDevice:static_cast<int>([window windowNumber])];
  char handle[32];
  std::snprintf(handle, sizeof handle, "x11:%lx", reinterpret_cast<unsigned long>(device));
  return device != nullptr ? handle : "";
}

NSSavePanel* PanelFor(const FileRequest& request) {
  if (request.kind == FileRequest::Kind::Save) return [NSSavePanel savePanel];
  NSOpenPanel* panel = [NSOpenPanel openPanel];
  [panel setCanChooseFiles:request.choosesFiles];
  [panel setCanChooseDirectories:request.choosesFolders];
  [panel setAllowsMultipleSelection:request.allowsSeveral];
  [panel setResolvesAliases:NO];
  return panel;
}

// The panel has no choice of filters: it shows the extensions of all filters. nil for any extension.
NSSet* ExtensionsOf(const FileRequest& request) {
  NSMutableSet* extensions = [NSMutableSet set];
  for (const FileFilter& filter : request.filters) {
    if (filter.extensions.empty()) return nil;
    for (const std::string& extension : filter.extensions)
      [extensions addObject:[TsNSString(extension) lowercaseString]];
  }
  return [extensions count] > 0 ? extensions : nil;
}

std::vector<std::string> PathsOf(NSSavePanel* panel) {
  std::vector<std::string> paths;
  NSOpenPanel* openPanel = As<NSOpenPanel>(panel);
  NSArray* names = openPanel != nil ? [openPanel filenames] : @[ [panel filename] ];
  for (NSString* name in names) paths.push_back(TsStdString(name));
  return paths;
}

}  // namespace

@implementation TsFileSession

- (instancetype)initWithWindow:(NSWindow*)window request:(FileRequest)request answer:(FileAnswer)answer {
  self = [super init];
  if (!self) return nil;
  _window = Retain(window);
  _request = std::move(request);
  _answer = std::move(answer);
  return self;
}

- (NSWindow*)window {
  return _window;
}

- (void)open {
  [Sessions() addObject:self];
  [self observe:NSWindowWillCloseNotification of:_window with:@selector(windowWillClose:)];
  [self observe:NSWindowDidResignKeyNotification of:_window with:@selector(windowDidResignKey:)];
  _portal = AskPortal(PortalHandleOf(_window), _request, [self](const auto& paths) {
    if (paths) return [self endWith:*paths];
    // GTK's dialog ends so with Escape. Only a dialog that never appeared needs a replacement.
    if (paths.error().code == kEndedOtherwise && _hasLostKeyboard) return [self endWith:{}];
    TsLogInfo(@"No file dialog of the desktop's: %s", paths.error().message.c_str());
    [self openPanel];
  });
}

- (void)observe:(NSString*)name of:(NSWindow*)window with:(SEL)handler {
  [[NSNotificationCenter defaultCenter] addObserver:self selector:handler name:name object:window];
}

- (void)openPanel {
  if ([NSApp modalWindow] != nil) {
    TsLogWarning(@"Another dialog is open: no file is chosen");
    return [self endWith:{}];
  }
  _panel = Retain(PanelFor(_request));
  [_panel setTitle:TsNSString(_request.title)];
  [_panel setMessage:TsNSString(_request.message)];
  [_panel setShowsHiddenFiles:_request.showsHidden];
  [_panel setDelegate:static_cast<id>(self)];
  [self observe:NSWindowWillCloseNotification of:_panel with:@selector(panelWillClose:)];
  NSString* folder = _request.folder.empty() ? nil : TsNSString(_request.folder);
  [_panel _setupForDirectory:folder file:TsNSString(SuggestedName(_request))];
  // The panel's buttons end a modal session.
  _modalSession = [NSApp beginModalSessionForWindow:_panel];
}

- (void)endWith:(std::vector<std::string>)paths {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  MainQueue::Shared().Post(
      [session = Retain(self), answer = std::exchange(_answer, nullptr), paths = std::move(paths)] {
        [Sessions() removeObject:session];
        answer(paths);
      });
}

- (void)windowDidResignKey:(NSNotification*)notification {
  _hasLostKeyboard = YES;
}

- (void)windowWillClose:(NSNotification*)notification {
  _portal.reset();
  if (_panel) return [_panel cancel:nil];
  [self endWith:{}];
}

- (void)panelWillClose:(NSNotification*)notification {
  [_panel setDelegate:nil];
  [NSApp endModalSession:_modalSession];
  [self endWith:_isAccepted ? PathsOf(_panel) : std::vector<std::string>()];
}

// The panel's last delegate call before it accepts its file.
- (BOOL)panel:(id)sender isValidFilename:(NSString*)name {
  _isAccepted = YES;
  return YES;
}

- (BOOL)panel:(id)sender shouldShowFilename:(NSString*)name {
  NSSet* extensions = ExtensionsOf(_request);
  BOOL isFolder = NO;
  [[NSFileManager defaultManager] fileExistsAtPath:name isDirectory:&isFolder];
  return isFolder || extensions == nil || [extensions containsObject:[[name pathExtension] lowercaseString]];
}

@end

namespace tessaro::platform {

void AskForFiles(NSWindow* window, FileRequest request, FileAnswer answer) {
  if (HasSession(window)) return MainQueue::Shared().Post([answer = std::move(answer)] { answer({}); });
  const auto session = Adopt([[TsFileSession alloc] initWithWindow:window
                                                           request:std::move(request)
                                                            answer:std::move(answer)]);
  [session open];
}

}  // namespace tessaro::platform
