#pragma once

#import <AppKit/AppKit.h>

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "Base/Ref.h"
#include "Platform/FilePanel.h"
#include "Platform/Linux/Desktop/FilePanelViews.h"
#include "Platform/Linux/Desktop/FolderListing.h"

// GNUstep's own panels for files stop the whole application while they are open, and once more for each question they
// have. This one is an ordinary window: folders are read in the background, and what is to be asked or told stands in
// it. It lives until it has answered.
@interface TsFilePanel : NSPanel <NSTableViewDataSource, NSTableViewDelegate, NSTextFieldDelegate> {
  tessaro::platform::FileRequest _request;
  tessaro::platform::FileAnswer _answer;
  tessaro::platform::FilePanelViews _views;
  std::filesystem::path _folder;
  std::vector<tessaro::platform::FolderEntry> _entries;
  std::map<std::string, Ref<NSImage>> _icons;
  // The name of the folder that has been made, until it gets another.
  std::string _newFolder;
  // The file whose place the person has been asked about.
  std::filesystem::path _doubtful;
  // For what is read in the background: the panel, or nil when it has closed or wants something else by now.
  std::shared_ptr<TsFilePanel*> _reader;
  Ref<TsFilePanel> _living;
  NSWindow* _owner;
}

+ (TsFilePanel*)panelOfWindow:(NSWindow*)window;

- (instancetype)initWithRequest:(tessaro::platform::FileRequest)request answer:(tessaro::platform::FileAnswer)answer;
- (void)showOver:(NSWindow*)window;

- (IBAction)accept:(id)sender;
- (IBAction)cancel:(id)sender;
- (IBAction)rowDoubleClicked:(id)sender;
- (IBAction)placeChosen:(id)sender;
- (IBAction)goUp:(id)sender;
- (IBAction)goHome:(id)sender;
- (IBAction)filterChosen:(id)sender;
- (IBAction)hiddenSwitched:(id)sender;
- (IBAction)newFolder:(id)sender;

@end
