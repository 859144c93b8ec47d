#pragma once

#import <Foundation/NSArray.h>

@class NSDictionary;
@class NSString;

// A toolbar's item definitions as script gives them. What is no dictionary is passed over.

// Whether a definition's value is the boolean true.
[[nodiscard]] bool TsIsTrue(NSDictionary* definition, NSString* key);

// The text under a key; nil where there is something else.
[[nodiscard]] NSString* TsText(NSDictionary* definition, NSString* key);

// The first definition that has this "identifier".
[[nodiscard]] NSDictionary* TsDefinitionWithIdentifier(NSArray* definitions, NSString* identifier);

// The platform's identifier for a definition with a "type", the "identifier" of another. A definition without either,
// or with an unknown type, gives none.
[[nodiscard]] NSArray* TsIdentifiersOfToolbarItems(NSArray* definitions);

// Identifiers of the definitions that are marked with a "default?" or "selectable?", as `key` says.
[[nodiscard]] NSArray* TsIdentifiersOfMarkedItems(NSArray* definitions, NSString* key);

// All "identifier"s, and behind them what the first definition with a "type" stands for. The others stay unknown to
// the customisation palette: scripts count on that.
[[nodiscard]] NSArray* TsAllowedIdentifiers(NSArray* definitions);
