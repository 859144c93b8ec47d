#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <string>
#include <vector>

namespace tessaro::platform {

// The types of pasteboards and the targets of X selections are two names for the same things. File names and addresses
// are in a form of GNUstep's own on pasteboards; all other data are the same on both sides.

using TargetContents = std::map<std::string, std::string>;

// The targets that data of a type give, the best first.
[[nodiscard]] std::vector<std::string> TargetsOfType(NSString* type);

// Adds the data in the forms of all targets of their type. Targets that have contents keep them.
void AddTargets(NSString* type, NSData* data, TargetContents& contents);

// The types that a program offers, in its order. Besides the type that applications know, each target is a type by its
// own name, whose data are exactly the program's.
[[nodiscard]] NSArray* TypesOfTargets(const std::vector<std::string>& targets);

// What a target holds, as data of the type; nil when it is nothing of the kind.
[[nodiscard]] NSData* DataOfTarget(NSString* type, const std::string& target, const std::string& bytes);

// The text that data of a text type hold; nil for nil.
[[nodiscard]] NSString* TextOfData(NSData* data);

}  // namespace tessaro::platform
