#import "Platform/Linux/Desktop/TsModelessPanel.h"

#import <AppKit/AppKit.h>

#include <utility>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Linux/Desktop/FilePortalOptions.h"

using namespace tessaro::platform;

// The part of -runModalForDirectory:file: before its modal loop.
@interface NSSavePanel (TsSetup)
- (void)_setupForDirectory:(NSString*)path file:(NSString*)name;
@end

namespace {

NSSavePanel* PanelFor(const FileRequest& request) {
  if (request.kind == FileRequest::Kind::Save) return [NSSavePanel savePanel];
  NSOpenPanel* panel = [NSOpenPanel openPanel];
  [panel setCanChooseFiles:request.choosesFiles];
  [panel setCanChooseDirectories:request.choosesFolders];
  [panel setAllowsMultipleSelection:request.allowsSeveral];
  [panel setResolvesAliases:NO];
  return panel;
}

// There is no choice of filters: every extension of any of them is shown. nil for everything.
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

@implementation TsModelessPanel

- (instancetype)initWithRequest:(const FileRequest&)request
                          ended:(std::function<void(std::vector<std::string> paths)>)ended {
  self = [super init];
  if (!self) return nil;
  _request = request;
  _ended = std::move(ended);
  return self;
}

- (void)open {
  if ([NSApp modalWindow] != nil) {
    TsLogWarning(@"Another dialog is open: no file is chosen");
    return [self endWith:{}];
  }
  _panel = Retain(PanelFor(_request));
  [_panel setTitle:TsNSString(_request.title)];
  [_panel setMessage:TsNSString(_request.message)];
  [_panel setShowsHiddenFiles:_request.showsHidden];
  [_panel setDelegate:static_cast<id>(self)];
  [[NSNotificationCenter defaultCenter] addObserver:self
                                           selector:@selector(panelWillClose:)
                                               name:NSWindowWillCloseNotification
                                             object:_panel];
  NSString* folder = _request.folder.empty() ? nil : TsNSString(_request.folder);
  [_panel _setupForDirectory:folder file:TsNSString(SuggestedName(_request))];
  // The panel's buttons end a modal session.
  _session = [NSApp beginModalSessionForWindow:_panel];
}

- (void)cancel {
  [_panel cancel:nil];
}

- (void)endWith:(std::vector<std::string>)paths {
  if (auto ended = std::exchange(_ended, nullptr)) ended(std::move(paths));
}

- (void)panelWillClose:(NSNotification*)notification {
  [[NSNotificationCenter defaultCenter] removeObserver:self];
  [_panel setDelegate:nil];
  [NSApp endModalSession:std::exchange(_session, nullptr)];
  [self endWith:_isAccepted ? PathsOf(_panel) : std::vector<std::string>()];
}

// The last question before the panel accepts its file.
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
