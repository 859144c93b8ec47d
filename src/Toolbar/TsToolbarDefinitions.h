#pragma once

#import <Foundation/NSArray.h>

@class NSDictionary;
@class NSString;

// A toolbar's item definitions from script. Values other than dictionaries are skipped.

// Whether a definition's value is the boolean true.
[[nodiscard]] bool TsIsTrue(NSDictionary* definition, NSString* key);

// The text under a key; nil for values of other types.
[[nodiscard]] NSString* TsText(NSDictionary* definition, NSString* key);

// The first definition that has this "identifier".
[[nodiscard]] NSDictionary* TsDefinitionWithIdentifier(NSArray* definitions, NSString* identifier);

// For each definition the platform's identifier of its "type", or else its "identifier". Definitions without either, or
// with an unknown type, are skipped.
[[nodiscard]] NSArray* TsIdentifiersOfToolbarItems(NSArray* definitions);

// Identifiers of the definitions that are marked with a "default?" or "selectable?", as `key` says.
[[nodiscard]] NSArray* TsIdentifiersOfMarkedItems(NSArray* definitions, NSString* key);

// All "identifier"s, followed by the platform's identifier of the first definition with a "type". The palette doesn't
// offer the other types: scripts rely on that.
[[nodiscard]] NSArray* TsAllowedIdentifiers(NSArray* definitions);
