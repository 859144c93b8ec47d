#include "Platform/FilePanel.h"

#import <AppKit/AppKit.h>

#include <algorithm>

#include "Base/Ref.h"
#include "Base/TsString.h"
#include "Platform/MainQueue.h"

// NSOpenPanel and NSSavePanel as sheets of the window. The user's choice is the consent to use the files. The kinds of
// files stand in a pop-up below the list. A sheet has no title: the message takes its place. Main thread only.
@interface TsFileKinds : NSObject {
  NSSavePanel* _panel;
  Ref<NSPopUpButton> _popUp;
  std::vector<tessaro::platform::FileFilter> _filters;
}
- (instancetype)initWithPanel:(NSSavePanel*)panel filters:(std::vector<tessaro::platform::FileFilter>)filters;
- (void)choose:(id)sender;
@end

@implementation TsFileKinds

- (instancetype)initWithPanel:(NSSavePanel*)panel filters:(std::vector<tessaro::platform::FileFilter>)filters {
  self = [super init];
  if (self == nil) return nil;
  _panel = panel;
  _filters = std::move(filters);
  _popUp = Adopt([[NSPopUpButton alloc] initWithFrame:NSMakeRect(0, 0, 240, 26) pullsDown:NO]);
  for (const auto& filter : _filters) [_popUp addItemWithTitle:TsNSString(filter.name)];
  [_popUp setTarget:self];
  [_popUp setAction:@selector(choose:)];
  if (_filters.size() > 1) [_panel setAccessoryView:_popUp];
  [self choose:nil];
  return self;
}

- (void)choose:(id)sender {
  if (_filters.empty()) return;
  const auto index = static_cast<std::size_t>(std::max<NSInteger>([_popUp indexOfSelectedItem], 0));
  NSMutableArray* types = [NSMutableArray array];
  for (const std::string& extension : _filters[index].extensions) [types addObject:TsNSString(extension)];
  [_panel setAllowedFileTypes:[types count] > 0 ? types : nil];
}

@end

namespace tessaro::platform {

namespace {

std::vector<std::string> PathsIn(NSSavePanel* panel) {
  std::vector<std::string> paths;
  if (![panel isKindOfClass:[NSOpenPanel class]]) {
    paths.push_back(TsStdString([[panel URL] path]));
    return paths;
  }
  for (NSURL* url in [static_cast<NSOpenPanel*>(panel) URLs]) paths.push_back(TsStdString([url path]));
  return paths;
}

NSSavePanel* NewOpenPanel(const FileRequest& request) {
  NSOpenPanel* panel = [NSOpenPanel openPanel];
  [panel setCanChooseFiles:request.choosesFiles];
  [panel setCanChooseDirectories:request.choosesFolders];
  [panel setAllowsMultipleSelection:request.allowsSeveral];
  [panel setAccessoryViewDisclosed:YES];
  return panel;
}

NSSavePanel* NewPanel(const FileRequest& request) {
  NSSavePanel* panel = request.kind == FileRequest::Kind::Open ? NewOpenPanel(request) : [NSSavePanel savePanel];
  const std::string& message = request.message.empty() ? request.title : request.message;
  if (!message.empty()) [panel setMessage:TsNSString(message)];
  if (!request.button.empty()) [panel setPrompt:TsNSString(request.button)];
  if (!request.folder.empty()) [panel setDirectoryURL:[NSURL fileURLWithPath:TsNSString(request.folder)]];
  // Only the last part: a name must not lead out of the folder.
  if (!request.name.empty()) [panel setNameFieldStringValue:[TsNSString(request.name) lastPathComponent]];
  [panel setShowsHiddenFiles:request.showsHidden];
  [panel setCanCreateDirectories:YES];
  return panel;
}

}  // namespace

void AskForFiles(NSWindow* window, FileRequest request, FileAnswer answer) {
  const auto later = [answer = std::move(answer)](std::vector<std::string> paths) {
    MainQueue::Shared().Post([answer, paths = std::move(paths)] { answer(paths); });
  };
  NSWindow* sheet = [window attachedSheet];
  if ([sheet isKindOfClass:[NSSavePanel class]]) {
    [sheet makeKeyAndOrderFront:nil];
    return later({});
  }
  const auto panel = Retain(NewPanel(request));
  const auto kinds = Adopt([[TsFileKinds alloc] initWithPanel:panel filters:std::move(request.filters)]);
  [panel beginSheetModalForWindow:window
                completionHandler:^(NSModalResponse result) {
                  // The kinds are the target of a control that does not retain them.
                  static_cast<void>(kinds.get());
                  later(result == NSModalResponseOK ? PathsIn(panel) : std::vector<std::string>());
                }];
}

}  // namespace tessaro::platform
