#pragma once

#import <AppKit/AppKit.h>

#include "Base/Ref.h"
#include "Platform/FilePanel.h"

namespace tessaro::platform {

// What a panel for files consists of; some are nil where the request has no use for them.
struct FilePanelViews {
  Ref<NSPopUpButton> places;
  Ref<NSTableView> table;
  Ref<NSTextField> name;
  Ref<NSPopUpButton> filter;
  Ref<NSTextField> notice;
  Ref<NSButton> hidden;
  Ref<NSButton> accept;
};

inline constexpr NSSize kFilePanelSize = {620, 440};

// The columns of the table.
extern NSString* const kIconColumn;
extern NSString* const kNameColumn;
extern NSString* const kSizeColumn;
extern NSString* const kTimeColumn;

// Fills `content`, of the size above; what happens in it is sent to `target`, by the methods that TsFilePanel has.
[[nodiscard]] FilePanelViews AddFilePanelViews(NSView* content, const FileRequest& request, id target);

}  // namespace tessaro::platform
