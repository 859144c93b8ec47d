#pragma once

#import <Foundation/Foundation.h>

#include <string>

#include "Base/Ref.h"
#include "Base/Result.h"
#include "Platform/Linux/Clipboard/SelectionReader.h"

namespace tessaro::platform {

// What another program offers as a selection, by the types of pasteboards. Calls wait for that program, within the
// limits; they fail when it doesn't answer.

// The types in the program's order; none when the selection has no owner.
[[nodiscard]] Result<Ref<NSArray>> ForeignTypes(const std::string& selection, SelectionLimits limits);

// The data of a type, from the first of its targets that the program has; null when it has none.
[[nodiscard]] Result<Ref<NSData>> ForeignData(const std::string& selection, NSString* type, SelectionLimits limits);

}  // namespace tessaro::platform
