#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <string>
#include <vector>

#include "Base/Ref.h"
#include "Base/Result.h"
#include "Platform/Linux/Clipboard/SelectionExchange.h"

namespace tessaro::platform {

// Translates between the types of pasteboards and the targets of X selections. GNUstep's pasteboards hold file names
// and addresses as property lists; all other data are the same on both sides.

using TargetContents = std::map<std::string, std::string>;

// The targets of a type, the best first.
[[nodiscard]] std::vector<std::string> TargetsOfType(NSString* type);

// Adds the data in the form of each target of their type. Targets that have contents keep them.
void AddTargets(NSString* type, NSData* data, TargetContents& contents);

// The types of the targets that a program offers, in its order. A target without a type of its own becomes a type by
// the target's name, with unchanged data.
[[nodiscard]] NSArray* TypesOfTargets(const std::vector<std::string>& targets);

// The contents of a target as data of the type; nil for contents of another kind.
[[nodiscard]] NSData* DataOfTarget(NSString* type, const std::string& target, const std::string& bytes);

// The text in data of a text type; nil for nil.
[[nodiscard]] NSString* TextOfData(NSData* data);

// Another program's selection by the types of pasteboards. Calls wait for that program, within the limits, and fail
// when it doesn't answer.

// The types in the program's order; none when the selection has no owner.
[[nodiscard]] Result<Ref<NSArray>> ForeignTypes(const std::string& selection, SelectionLimits limits);

// The data of a type, from the first of its targets that the program has; null when it has none.
[[nodiscard]] Result<Ref<NSData>> ForeignData(const std::string& selection, NSString* type, SelectionLimits limits);

}  // namespace tessaro::platform
