#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <string>
#include <vector>

namespace tessaro::platform {

// The types of pasteboards and the targets of X selections are two names for the same things. Texts and file names are
// in a form of GNUstep's own on pasteboards; all other data are the same on both sides.

using TargetContents = std::map<std::string, std::string>;

// Whether programs that know nothing of GNUstep could make use of the type, and its pasteboard server doesn't let them.
[[nodiscard]] bool IsForOtherPrograms(NSString* type);

// The targets that data of a type give, the best first.
[[nodiscard]] std::vector<std::string> TargetsOfType(NSString* type);

// Adds the data in the forms of all targets of their type. What is there already stays.
void AddTargets(NSString* type, NSData* data, TargetContents& contents);

// The types that a program offers, in its order.
[[nodiscard]] NSArray* TypesOfTargets(const std::vector<std::string>& targets);

// What a target holds, as data of the type; nil when it is nothing of the kind.
[[nodiscard]] NSData* DataOfTarget(NSString* type, const std::string& target, const std::string& bytes);

}  // namespace tessaro::platform
