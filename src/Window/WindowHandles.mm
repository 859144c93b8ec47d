#include "Window/WindowHandles.h"

#include "Platform/Cocoa.h"

namespace {

bool Contains(NSView* view, const void* reference) {
  if (view == reference) return true;
  for (NSView* each in [view subviews]) {
    if (Contains(each, reference)) return true;
  }
  return false;
}

}  // namespace

NSWindow* TsLivingWindow(const void* reference) {
  if (reference == nullptr) return nil;
  NSArray* windows = [NSApp windows];
  for (NSWindow* window in windows) {
    if (window == reference) return window;
  }
  for (NSWindow* window in windows) {
    if (Contains([window contentView], reference)) return window;
  }
  return nil;
}
