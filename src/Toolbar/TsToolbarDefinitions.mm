#include "Toolbar/TsToolbarDefinitions.h"

#include "Base/Ref.h"
#include "Platform/Cocoa.h"

namespace {

NSString* SystemIdentifier(NSString* type) {
  NSDictionary* identifiers = @{
    @"space" : NSToolbarSpaceItemIdentifier,
    @"flexible-space" : NSToolbarFlexibleSpaceItemIdentifier,
    @"separator" : NSToolbarSeparatorItemIdentifier,
    @"colors" : NSToolbarShowColorsItemIdentifier,
    @"customize-toolbar" : NSToolbarCustomizeToolbarItemIdentifier,
    @"print" : NSToolbarPrintItemIdentifier,
    @"cloud-sharing" : NSToolbarCloudSharingItemIdentifier,
  };
  return type != nil ? [identifiers objectForKey:type] : nil;
}

bool IsDefinition(id value) { return As<NSDictionary>(value) != nil; }

}  // namespace

// There is one object for true; the number 1 is equal to it, but not identical.
bool TsIsTrue(NSDictionary* definition, NSString* key) {
  return [definition objectForKey:key] == [NSNumber numberWithBool:YES];
}

NSString* TsText(NSDictionary* definition, NSString* key) { return As<NSString>([definition objectForKey:key]); }

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
