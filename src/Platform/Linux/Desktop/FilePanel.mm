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
#include "Platform/Linux/Desktop/TsModelessPanel.h"
#include "Platform/MainQueue.h"

using namespace tessaro::platform;

// A dialog that is open over a window: the portal's, or GNUstep's where the portal has none.
@interface TsFileSession : NSObject {
  Ref<NSWindow> _window;
  FileRequest _request;
  FileAnswer _answer;
  std::unique_ptr<FilePortal> _portal;
  Ref<TsModelessPanel> _panel;
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

// The X window, as portals want it.
std::string PortalHandleOf(NSWindow* window) {
  void* device = [GSServerForWindow(window) windowDevice:static_cast<int>([window windowNumber])];
  char handle[32];
  std::snprintf(handle, sizeof handle, "x11:%lx", reinterpret_cast<unsigned long>(device));
  return device != nullptr ? handle : "";
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
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(windowWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:_window];
  _portal = std::make_unique<FilePortal>(PortalHandleOf(_window), _request, [self](const auto& paths) {
    if (paths) return [self endWith:*paths];
    TsLogInfo(@"No file dialog of the desktop's: %s", paths.error().message.c_str());
    [self openPanel];
  });
}

- (void)openPanel {
  _panel = Adopt([[TsModelessPanel alloc]
      initWithRequest:_request
                ended:[self](std::vector<std::string> paths) { [self endWith:std::move(paths)]; }]);
  [_panel open];
}

- (void)endWith:(std::vector<std::string>)paths {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  MainQueue::Shared().Post(
      [session = Retain(self), answer = std::exchange(_answer, nullptr), paths = std::move(paths)] {
        [Sessions() removeObject:session];
        answer(paths);
      });
}

- (void)windowWillClose:(NSNotification*)notification {
  _portal.reset();
  if (_panel) return [_panel cancel];
  [self endWith:{}];
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
