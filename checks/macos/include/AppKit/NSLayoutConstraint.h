#pragma once

#include <AppKit/AppKitDefines.h>

enum NSLayoutAttribute : NSInteger {
  NSLayoutAttributeLeft = 1,
  NSLayoutAttributeRight = 2,
  NSLayoutAttributeTop = 3,
  NSLayoutAttributeBottom = 4,
};
