#pragma once

#import <Foundation/NSObject.h>

// Sends `selector` to `observer` whenever the desktop's appearance changes, until TsLeaveTheme(). `observer` is not
// retained.
void TsObserveTheme(id observer, SEL selector);
void TsLeaveTheme(id observer);
