#include "Toolbar/TsToolbarDefinitions.h"

#include "Platform/Cocoa.h"

namespace {

NSString* SystemIdentifier(NSString* type) {
  const struct {
    NSString* type;
    NSString* identifier;
  } items[] = {
      {@"space", NSToolbarSpaceItemIdentifier},
      {@"flexible-space", NSToolbarFlexibleSpaceItemIdentifier},
      {@"separator", NSToolbarSeparatorItemIdentifier},
      {@"colors", NSToolbarShowColorsItemIdentifier},
      {@"customize-toolbar", NSToolbarCustomizeToolbarItemIdentifier},
      {@"print", NSToolbarPrintItemIdentifier},
      {@"cloud-sharing", NSToolbarCloudSharingItemIdentifier},
  };
  for (const auto& item : items) {
    if ([type isEqualToString:item.type]) return item.identifier;
  }
  return nil;
}

bool IsDefinition(id value) { return [value isKindOfClass:[NSDictionary class]]; }

}  // namespace

bool TsIsTrue(NSDictionary* definition, NSString* key) {
  return [[definition objectForKey:key] isEqual:[NSNumber numberWithBool:YES]];
}

NSString* TsText(NSDictionary* definition, NSString* key) {
  id text = [definition objectForKey:key];
  return [text isKindOfClass:[NSString class]] ? text : nil;
}

NSDictionary* TsDefinitionWithIdentifier(NSArray* definitions, NSString* identifier) {
  for (NSDictionary* definition in definitions) {
    if (IsDefinition(definition) && [TsText(definition, @"identifier") isEqualToString:identifier]) return definition;
  }
  return nil;
}

NSArray* TsIdentifiersOfToolbarItems(NSArray* definitions) {
  NSMutableArray* identifiers = [NSMutableArray array];
  for (NSDictionary* definition in definitions) {
    if (!IsDefinition(definition)) continue;
    NSString* identifier = [definition objectForKey:@"type"] != nil ? SystemIdentifier(TsText(definition, @"type"))
                                                                    : TsText(definition, @"identifier");
    if (identifier != nil) [identifiers addObject:identifier];
  }
  return identifiers;
}

NSArray* TsIdentifiersOfMarkedItems(NSArray* definitions, NSString* key) {
  NSMutableArray* marked = [NSMutableArray array];
  for (NSDictionary* definition in definitions) {
    if (IsDefinition(definition) && TsIsTrue(definition, key)) [marked addObject:definition];
  }
  return TsIdentifiersOfToolbarItems(marked);
}

NSArray* TsAllowedIdentifiers(NSArray* definitions) {
  NSMutableArray* identifiers = [NSMutableArray array];
  NSDictionary* firstTyped = nil;
  for (NSDictionary* definition in definitions) {
    if (!IsDefinition(definition)) continue;
    if (NSString* identifier = TsText(definition, @"identifier")) [identifiers addObject:identifier];
    if (firstTyped == nil && [definition objectForKey:@"type"] != nil) firstTyped = definition;
  }
  if (firstTyped != nil) {
    [identifiers addObjectsFromArray:TsIdentifiersOfToolbarItems([NSArray arrayWithObject:firstTyped])];
  }
  return identifiers;
}
