#pragma once

#import <Foundation/NSArray.h>

// The rows of the menu that the application's delegate gives for the Dock, as dictionaries: "title", "isOn",
// "isEnabled"; a separator has none of them. Empty when the delegate gives no menu.
[[nodiscard]] NSArray* DescribeDockMenu();
