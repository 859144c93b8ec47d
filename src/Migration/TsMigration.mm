#import "Migration/TsMigration.h"

#include <utility>

#include "Base/Ref.h"
#include "Base/TsString.h"
#import "Extensions/NSDictionary+TsFile.h"
#import "Migration/TsAccounts.h"
#import "Migration/TsWorkspaceStates.h"
#include "Platform/StandardDirectories.h"
#include "Utilities/TsJSON.h"

namespace {

NSString* const kPreviousVersionsFolder = @"Tessaro 3";

// An application may say in its bundle which one it replaces.
NSString* const kPreviousVersionsIdentifierKey = @"TsPreviousVersionIdentifier";
NSString* const kPreviousVersionsIdentifier = @"com.tessaro.Tessaro3";

NSString* const kCarriedOverPreferences[] = {
    @"DoNotDisturb",
    @"AskForPhotoOptimizationSettings",
    @"AutomaticallyOpenSafeDownloads",
    @"ConvertImagesToFileType",
    @"DisplayStatusItem",
    @"DownloadDestinationPath",
    @"DownloadsAskForDestination",
    @"HideTabBar",
    @"InsertImagesInline",
    @"PrintWithGmailHeader",
    @"ScaleImagesToMaxDimension",
    @"ShowStatusBar",
    @"WebViewTextSizeMultiplier",
    @"DefaultSenderAccountIdentifier",
};

// Foundation's own way of expanding a tilde may know another home.
NSString* WithTildeExpanded(NSString* path) {
  if (![path hasPrefix:@"~"]) return path;
  NSString* home = TsNSString(tessaro::platform::HomeDirectory().native());
  return [home stringByAppendingPathComponent:[path substringFromIndex:1]];
}

NSString* PreferencesPath() {
  id identifier = [[NSBundle mainBundle] objectForInfoDictionaryKey:kPreviousVersionsIdentifierKey];
  if (![identifier isKindOfClass:[NSString class]]) identifier = kPreviousVersionsIdentifier;
  return WithTildeExpanded([NSString stringWithFormat:@"~/Library/Preferences/%@.plist", identifier]);
}

NSDictionary* ExportedTab(TsGoogleAppState* state) {
  TsGoogleAppIdentifier* identifier = [TsGoogleAppIdentifier identifierWithDescription:[state identifier]];
  return [NSDictionary
      dictionaryWithObjectsAndKeys:[identifier accountIdentifier], @"email", [identifier type], @"app", nil];
}

NSDictionary* ExportedWorkspace(TsWorkspaceState* state) {
  NSMutableArray* tabs = [NSMutableArray array];
  for (TsGoogleAppState* appState in [state appStates]) [tabs addObject:ExportedTab(appState)];
  id active = [state active];
  return [NSDictionary
      dictionaryWithObjectsAndKeys:active != nil ? active : [NSNull null], @"active?", tabs, @"tabs", nil];
}

// Whether JSON can express it.
bool PutSection(TsExportText& json, std::string_view lead, id section) {
  NSString* text = TsConvertToJSONString(section);
  if (text == nil) return false;
  json.Put(lead);
  json.text += TsStdString(text);
  return true;
}

}  // namespace

@implementation TsMigration

- (NSString*)previousVersionAppSupportFolder {
  NSArray* folders = NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask, NO);
  NSString* folder = [folders count] > 0 ? WithTildeExpanded([folders objectAtIndex:0]) : NSTemporaryDirectory();
  return [folder stringByAppendingPathComponent:kPreviousVersionsFolder];
}

- (NSString*)accountsPath {
  return [[self previousVersionAppSupportFolder] stringByAppendingPathComponent:@"Accounts.xml"];
}

- (NSString*)workspaceStatesPath {
  return [[self previousVersionAppSupportFolder] stringByAppendingPathComponent:@"WorkspaceStates.xml"];
}

- (BOOL)hasPreviousVersion {
  return [[NSFileManager defaultManager] fileExistsAtPath:[self accountsPath]];
}

- (BOOL)hasAccounts {
  const auto accounts = Adopt([[TsAccounts alloc] initWithPath:[self accountsPath]]);
  return [[accounts all] count] > 0;
}

- (void)exportAccountsTo:(TsExportText&)json {
  json.Put('[');
  if ([self hasPreviousVersion]) {
    const auto accounts = Adopt([[TsAccounts alloc] initWithPath:[self accountsPath]]);
    bool isFirst = true;
    for (TsAccount* account in [accounts all]) {
      if (!std::exchange(isFirst, false)) json.Put(',');
      [account exportTo:json];
    }
  }
  json.Put(']');
}

- (NSArray*)accountsAsDictionaries {
  TsExportText json;
  [self exportAccountsTo:json];
  return TsConvertFromJSONString(TsNSString(json.text), nullptr);
}

- (NSArray*)workspaces {
  NSMutableArray* exported = [NSMutableArray array];
  if (![self hasPreviousVersion]) return exported;
  const auto states = Adopt([[TsWorkspaceStates alloc] initWithPath:[self workspaceStatesPath]]);
  for (TsWorkspaceState* state in [states all]) [exported addObject:ExportedWorkspace(state)];
  return exported;
}

- (NSDictionary*)userDefaults {
  NSDictionary* preferences = [NSDictionary ts_dictionaryInPropertyListFile:PreferencesPath()];
  NSMutableDictionary* carriedOver = [NSMutableDictionary dictionary];
  for (NSString* key : kCarriedOverPreferences) {
    id value = [preferences objectForKey:key];
    if (value != nil) [carriedOver setObject:value forKey:key];
  }
  return carriedOver;
}

- (std::optional<std::string>)reportOf:(NSString*)selection {
  const auto isSelected = [&](NSString* section) {
    return selection == nil || [selection rangeOfString:section].location != NSNotFound;
  };
  TsExportText json;
  json.Put([self hasPreviousVersion] ? "{\"has-previous-version?\":true" : "{\"has-previous-version?\":false");
  if (isSelected(@"accounts")) {
    json.Put(",\"accounts\":");
    [self exportAccountsTo:json];
  }
  if (isSelected(@"workspaces") && !PutSection(json, ",\"workspaces\":", [self workspaces])) return std::nullopt;
  if (isSelected(@"prefs") && !PutSection(json, ",\"prefs\":", [self userDefaults])) return std::nullopt;
  json.Put('}');
  return std::move(json.text);
}

@end
