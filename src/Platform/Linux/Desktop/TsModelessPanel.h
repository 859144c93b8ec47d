#pragma once

#import <AppKit/NSApplication.h>
#import <AppKit/NSSavePanel.h>

#include <functional>
#include <string>
#include <vector>

#include "Base/Ref.h"
#include "Platform/FilePanel.h"

// GNUstep's file panel, shown without a modal loop, which would stop script. There is one panel of each kind in the
// process. Main thread only.
@interface TsModelessPanel : NSObject {
  tessaro::platform::FileRequest _request;
  std::function<void(std::vector<std::string> paths)> _ended;
  Ref<NSSavePanel> _panel;
  NSModalSession _session;
  BOOL _isAccepted;
}

// `ended` is called once, with no paths when the panel was cancelled.
- (instancetype)initWithRequest:(const tessaro::platform::FileRequest&)request
                          ended:(std::function<void(std::vector<std::string> paths)>)ended;

// Ends at once when another dialog has the application.
- (void)open;

- (void)cancel;

@end
