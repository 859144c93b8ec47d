#pragma once

#import <Foundation/Foundation.h>

#include <vector>

#include "Base/Ref.h"

@class AtomNSWindow;
@class AtomNSWindowDelegate;
class ScriptEvents;

// The browser windows. Script knows a window by its handle: 8 bytes that hold the reference itself.
// Main thread only; methods raise when there is no such window.
class WindowList {
 public:
  // `events` must outlive the list; it receives "window-closed" with the window's handle.
  explicit WindowList(const ScriptEvents& events);
  ~WindowList();
  WindowList(const WindowList&) = delete;
  WindowList& operator=(const WindowList&) = delete;

  // Opens a window in front of the others and gives its handle.
  NSData* Open(NSString* title, NSSize size);
  void Close(NSData* handle);
  void SetTitle(NSData* handle, NSString* title);
  // "title", "frame", "isVisible", "isKey", "isMain", "systemWindow" (the X window), "typedText", "droppedFiles" …
  [[nodiscard]] NSDictionary* Describe(NSData* handle) const;

  [[nodiscard]] static NSData* HandleOf(id object);

  void WillClose(AtomNSWindow* window);

 private:
  [[nodiscard]] AtomNSWindow* WindowOf(NSData* handle) const;

  const ScriptEvents& events_;
  Ref<AtomNSWindowDelegate> delegate_;
  std::vector<Ref<AtomNSWindow>> windows_;
};
