#import "Migration/TsAccount.h"

#import <AppKit/NSWorkspace.h>
#import <Foundation/NSByteCountFormatter.h>

#include <algorithm>

#include "Base/Ref.h"
#import "Contacts/TsRecipient.h"
#import "Keychain/TsKeyChain.h"

@implementation TsDownloadItem

+ (NSSet*)keyPathsForValuesAffectingValueForKey:(NSString*)key {
  NSDictionary* sources = @{
    @"isFinished" : @[ @"bytesReceived", @"bytesExpected" ],
    @"progressInPercents" : @[ @"bytesReceived", @"bytesExpected" ],
    @"sizeHumanReadable" : @[ @"bytesExpected" ],
    @"name" : @[ @"path" ],
    @"icon" : @[ @"path" ],
    @"previewItemURL" : @[ @"path" ],
  };
  NSArray* own = [sources objectForKey:key];
  return own != nil ? [NSSet setWithArray:own] : [super keyPathsForValuesAffectingValueForKey:key];
}

- (void)awakeFromInsert {
  [self setCreatedAt:[NSDate date]];
}

- (TsAccount*)account {
  return [self objectIn:"account"];
}

- (BOOL)isFinished {
  const long long expected = [[self bytesExpected] longLongValue];
  return expected > 0 && [[self bytesReceived] longLongValue] >= expected;
}

- (NSString*)name {
  return [[self path] lastPathComponent];
}

- (NSImage*)icon {
  NSString* path = [self path];
  return path != nil ? [[NSWorkspace sharedWorkspace] iconForFile:path] : nil;
}

- (NSString*)sizeHumanReadable {
  return [NSByteCountFormatter stringFromByteCount:[[self bytesExpected] longLongValue]
                                        countStyle:NSByteCountFormatterCountStyleFile];
}

- (NSNumber*)progressInPercents {
  const double expected = [[self bytesExpected] doubleValue];
  const double share = expected > 0 ? [[self bytesReceived] doubleValue] / expected : 0;
  return [NSNumber numberWithInt:static_cast<int>(std::clamp(share, 0.0, 1.0) * 100)];
}

- (NSURL*)previewItemURL {
  NSString* path = [self path];
  return path != nil ? [NSURL fileURLWithPath:path] : nil;
}

@end

namespace {

// Whatever this application's bundle is called.
NSString* const kPreviousVersionsService = @"Tessaro 3";

constexpr int kOrderStep = 10;  // leaves room between neighbours

// nil when the item is missing or can't be read.
NSString* StoredPassword(TsKeychain* keychain, NSString* account) {
  if (account == nil) return nil;
  return As<NSString>([[keychain passwordForAccount:account] objectForKey:@"password"]);
}

NSColor* ColorIn(NSData* archive) {
  @try {
    return As<NSColor>([NSKeyedUnarchiver unarchiveObjectWithData:archive]);
  } @catch (NSException*) {
    return nil;
  }
}

NSString* Trimmed(NSString* text) {
  return [text stringByTrimmingCharactersInSet:[NSCharacterSet whitespaceAndNewlineCharacterSet]];
}

bool IsSameText(NSString* a, NSString* b) { return a == b || [a isEqualToString:b]; }

NSNumber* TruthValue(BOOL value) { return [NSNumber numberWithBool:value]; }

id OrNull(id value) { return value != nil ? value : [NSNull null]; }

NSString* const kExported[] = {@"order",
                               @"username",
                               @"nickname",
                               @"detectUnreadCountType",
                               @"defaultInboxType",
                               @"customInboxLabelName",
                               @"unreadMessagesLocation",
                               @"autoBCC",
                               @"notificationSound",
                               @"loadRapportivePlugin",
                               @"loadClearbitConnectPlugin",
                               @"loadBoomerangPlugin",
                               @"loadStreakPlugin",
                               @"loadRightInboxPlugin"};

// False when they are missing; exported as "isGmailChatBlockedAsBOOL" and so on.
NSString* const kExportedBooleans[] = {@"isGmailChatBlocked", @"isGooglePlusBlocked", @"isGoogleDriveBlocked",
                                       @"isGoogleCalendarAlertsBlocked"};

}  // namespace

@implementation TsBookmark

- (void)awakeFromInsert {
  [self setOrder:[NSNumber numberWithInt:0]];
  [self setTitle:@""];
  [self setUrl:@""];
}

- (TsAccount*)account {
  return [self objectIn:"account"];
}

@end

@implementation TsSignature

- (TsAccount*)account {
  return [self objectIn:"account"];
}

@end

@implementation TsAccount

- (NSString*)password {
  NSString* username = [self username];
  NSString* password = [self keychainPasswordFor:username];
  return password != nil ? password : [[TsTransientKeychain sharedInstance] passwordForAccount:username];
}

- (NSString*)keychainPasswordFor:(NSString*)account {
  const auto keychain = Adopt([[TsKeychain alloc] initWithService:kPreviousVersionsService]);
  return StoredPassword(keychain, account);
}

- (void)setPassword:(NSString*)password storeInKeychain:(BOOL)storeInKeychain {
  NSString* username = [self username];
  if (username == nil) return;
  [[TsKeychain sharedInstance] setPassword:storeInKeychain ? password : nil forAccount:username];
  [[TsTransientKeychain sharedInstance] setPassword:storeInKeychain ? nil : password forAccount:username];
}

- (NSString*)oauthAccount {
  NSString* username = [self username];
  return username != nil ? [NSString stringWithFormat:@"%@ (oauth)", username] : nil;
}

- (NSString*)oauthRefreshToken {
  return [self keychainPasswordFor:[self oauthAccount]];
}

- (void)setOauthRefreshToken:(NSString*)token {
  NSString* account = [self oauthAccount];
  if (account != nil) [[TsKeychain sharedInstance] setPassword:token forAccount:account];
}

- (NSNumber*)isNotificationEnabled {
  return [self autoAuthenticate];
}

- (void)setIsNotificationEnabled:(NSNumber*)isEnabled {
  [self setAutoAuthenticate:isEnabled];
  if (![isEnabled boolValue]) [self setOauthRefreshToken:nil];
}

- (NSNumber*)isNotifyNewMessages {
  return [self notificationUseGrowl];
}

- (void)setIsNotifyNewMessages:(NSNumber*)notifies {
  [self setNotificationUseGrowl:notifies];
}

- (BOOL)detectUnreadCountTypeAsBOOL {
  NSNumber* detects = [self detectUnreadCountType];
  return detects == nil || [detects boolValue];
}

- (void)setDetectUnreadCountTypeAsBOOL:(BOOL)detects {
  [self setDetectUnreadCountType:TruthValue(detects)];
}

- (BOOL)isGmailChatBlockedAsBOOL {
  return [[self isGmailChatBlocked] boolValue];
}

- (BOOL)isGooglePlusBlockedAsBOOL {
  return [[self isGooglePlusBlocked] boolValue];
}

- (BOOL)isGoogleDriveBlockedAsBOOL {
  return [[self isGoogleDriveBlocked] boolValue];
}

- (BOOL)isGoogleCalendarAlertsBlockedAsBOOL {
  return [[self isGoogleCalendarAlertsBlocked] boolValue];
}

- (NSColor*)color {
  NSData* archive = [self colorData];
  NSColor* color = archive != nil ? ColorIn(archive) : nil;
  return color != nil ? color : [NSColor systemBlueColor];
}

- (void)setColor:(NSColor*)color {
  [self setColorData:color != nil ? [NSKeyedArchiver archivedDataWithRootObject:color] : nil];
}

- (NSArray*)autoBccRecipients {
  NSMutableArray* recipients = [NSMutableArray array];
  for (NSString* part in [[self autoBCC] componentsSeparatedByString:@","]) {
    NSString* address = Trimmed(part);
    if ([address length] > 0) [recipients addObject:[TsRecipient recipient:address name:nil]];
  }
  return recipients;
}

- (NSSet*)downloadItems {
  return [NSSet setWithArray:[self objectsIn:"downloadItems"]];
}

- (NSUInteger)numberOfDownloadItems {
  return [[self objectsIn:"downloadItems"] count];
}

- (NSArray*)downloadItemsDefaultSortDescriptors {
  const auto byDate = Adopt([[NSSortDescriptor alloc] initWithKey:@"createdAt" ascending:YES]);
  return [NSArray arrayWithObject:byDate];
}

- (TsDownloadItem*)addDownloadItemWithPath:(NSString*)path {
  TsDownloadItem* item = [self insertObjectIn:"downloadItems"];
  [item setPath:path];
  return item;
}

- (void)deleteDownloadItemsThatAreFinished:(BOOL)finished {
  for (TsDownloadItem* item in [self objectsIn:"downloadItems"]) {
    if ([item isFinished] == finished) [[self managedObjectContext] deleteObject:item];
  }
}

- (void)deleteFinishedDownloadItems {
  [self deleteDownloadItemsThatAreFinished:YES];
}

- (void)deletePendingDownloadItems {
  [self deleteDownloadItemsThatAreFinished:NO];
}

- (void)deleteAllDownloadItems {
  for (TsDownloadItem* item in [self objectsIn:"downloadItems"]) [[self managedObjectContext] deleteObject:item];
}

- (NSSet*)bookmarks {
  return [NSSet setWithArray:[self objectsIn:"bookmarks"]];
}

- (NSArray*)bookmarksOrdered {
  return TsSorted([self objectsIn:"bookmarks"], [](TsBookmark* bookmark) { return TsSortKey([bookmark order]); });
}

- (TsBookmark*)addBookmarkForUrl:(NSString*)url title:(NSString*)title {
  const long long last = [[[[self bookmarksOrdered] lastObject] order] longLongValue];
  TsBookmark* bookmark = [self insertObjectIn:"bookmarks"];
  [bookmark setOrder:[NSNumber numberWithLongLong:last + kOrderStep]];
  [bookmark setTitle:title];
  [bookmark setUrl:url];
  return bookmark;
}

- (NSSet*)signatures {
  return [NSSet setWithArray:[self objectsIn:"signatures"]];
}

- (TsSignature*)addSignatureForEmail:(NSString*)email name:(NSString*)name {
  TsSignature* signature = [self insertObjectIn:"signatures"];
  [signature setEmail:email];
  [signature setName:name];
  return signature;
}

- (NSArray*)signaturesForEmail:(NSString*)email {
  NSMutableArray* found = [NSMutableArray array];
  for (TsSignature* signature in [self objectsIn:"signatures"]) {
    if (IsSameText([signature email], email)) [found addObject:signature];
  }
  return found;
}

- (TsSignature*)signatureForEmail:(NSString*)email name:(NSString*)name {
  for (TsSignature* signature in [self signaturesForEmail:email]) {
    if (IsSameText([signature name], name)) return signature;
  }
  return nil;
}

- (TsSignature*)defaultSignatureForEmail:(NSString*)email {
  NSArray* signatures = [self signaturesForEmail:email];
  for (TsSignature* signature in signatures) {
    if ([[signature useByDefault] boolValue]) return signature;
  }
  return [signatures firstObject];
}

- (NSDictionary*)dictionaryWithValues {
  NSDictionary* values = [self values];
  if (values == nil) return nil;
  NSMutableDictionary* exported = [NSMutableDictionary dictionary];
  for (NSString* key : kExported) [exported setObject:OrNull([values objectForKey:key]) forKey:key];
  for (NSString* key : kExportedBooleans) {
    [exported setObject:TruthValue([[values objectForKey:key] boolValue])
                 forKey:[key stringByAppendingString:@"AsBOOL"]];
  }
  [exported setObject:OrNull([self isNotificationEnabled]) forKey:@"isNotificationEnabled"];
  [exported setObject:OrNull([self isNotifyNewMessages]) forKey:@"isNotifyNewMessages"];
  [exported setObject:OrNull([self password]) forKey:@"password"];
  [exported setObject:[NSNumber numberWithUnsignedInteger:[self numberOfDownloadItems]]
               forKey:@"numberOfDownloadItems"];
  [exported setObject:TsExported([self objectsIn:"bookmarks"]) forKey:@"bookmarks"];
  return exported;
}

@end
