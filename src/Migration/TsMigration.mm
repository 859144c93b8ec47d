#import "Migration/TsMigration.h"

#include <utility>

#include "Base/Lifetime.h"
#include "Base/Ref.h"
#include "Base/TsString.h"
#import "Extensions/NSDictionary+TsFile.h"
#import "Migration/TsWorkspaceStates.h"
#include "Platform/StandardDirectories.h"

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
  NSString* identifier =
      As<NSString>([[NSBundle mainBundle] objectForInfoDictionaryKey:kPreviousVersionsIdentifierKey]);
  if (identifier == nil) identifier = kPreviousVersionsIdentifier;
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

}  // namespace

@implementation TsAccounts

+ (TsAccounts*)sharedInstance {
  static Forever<Ref<TsAccounts>> accounts(
      Adopt([[TsAccounts alloc] initWithPath:[Adopt([[TsMigration alloc] init]) accountsPath]]));
  return *accounts;
}

- (NSArray*)all {
  NSArray* accounts = [self fetch:"Account" forQuery:@"TsAccounts#all"];
  return TsSorted(accounts, [](TsAccount* account) {
    return std::pair(TsSortKey([account order]), TsCharacters([account username]));
  });
}

// The first account whose value is `value`, but for the sender.
- (TsAccount*)find:(NSString*)attribute value:(NSString*)value sender:(id)sender forQuery:(NSString*)query {
  for (TsAccount* account in [self fetch:"Account" forQuery:query]) {
    NSString* own = [[account values] objectForKey:attribute];
    if (account != sender && (own == value || [own isEqualToString:value])) return account;
  }
  return nil;
}

- (TsAccount*)findByUsername:(NSString*)username {
  return [self findByUsername:username sender:nil];
}

- (TsAccount*)findByUsername:(NSString*)username sender:(id)sender {
  NSString* query = [NSString stringWithFormat:@"TsAccounts#findByUsername:'%@'", username];
  return [self find:@"username" value:username sender:sender forQuery:query];
}

- (TsAccount*)findByNickname:(NSString*)nickname {
  return [self findByNickname:nickname sender:nil];
}

- (TsAccount*)findByNickname:(NSString*)nickname sender:(id)sender {
  NSString* query = [NSString stringWithFormat:@"TsAccounts#findByNickname:'%@'", nickname];
  return [self find:@"nickname" value:nickname sender:sender forQuery:query];
}

- (BOOL)hasBookmarks {
  return [[_context fetch:"Bookmark" error:nullptr] count] > 0;
}

- (BOOL)isAccessible:(TsAccount*)account {
  return [_context contains:account];
}

@end

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
  return [[accounts fetch:"Account" forQuery:@"TsAccounts#all"] count] > 0;
}

- (NSArray*)accountsAsDictionaries {
  if (![self hasPreviousVersion]) return [NSArray array];
  const auto accounts = Adopt([[TsAccounts alloc] initWithPath:[self accountsPath]]);
  return TsExported([accounts all]);
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

- (NSDictionary*)reportOf:(NSString*)selection {
  const auto isSelected = [&](NSString* section) {
    return selection == nil || [selection rangeOfString:section].location != NSNotFound;
  };
  NSMutableDictionary* report = [NSMutableDictionary dictionary];
  [report setObject:[NSNumber numberWithBool:[self hasPreviousVersion]] forKey:@"has-previous-version?"];
  if (isSelected(@"accounts")) [report setObject:[self accountsAsDictionaries] forKey:@"accounts"];
  if (isSelected(@"workspaces")) [report setObject:[self workspaces] forKey:@"workspaces"];
  if (isSelected(@"prefs")) [report setObject:[self userDefaults] forKey:@"prefs"];
  return report;
}

@end
