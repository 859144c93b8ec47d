#pragma once

#import <AppKit/NSColor.h>

#import "Migration/TsManagedObject.h"

@class TsBookmark;
@class TsDownloadItem;
@class TsSignature;

// A mail account of the previous version. Leaves its store with the password in clear; the bookmarks are in no
// particular order then.
@interface TsAccount : TsManagedObject

@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* username;  // the e-mail address
@property(nonatomic, copy) NSString* nickname;
@property(nonatomic, copy) NSData* colorData;
@property(nonatomic, copy) NSNumber* detectUnreadCountType;
@property(nonatomic, copy) NSNumber* defaultInboxType;
@property(nonatomic, copy) NSString* customInboxLabelName;
@property(nonatomic, copy) NSNumber* unreadMessagesLocation;
@property(nonatomic, copy) NSString* autoBCC;
@property(nonatomic, copy) NSString* notificationSound;
@property(nonatomic, copy) NSNumber* loadRapportivePlugin;
@property(nonatomic, copy) NSNumber* loadClearbitConnectPlugin;
@property(nonatomic, copy) NSNumber* loadBoomerangPlugin;
@property(nonatomic, copy) NSNumber* loadStreakPlugin;
@property(nonatomic, copy) NSNumber* loadAwayFindPlugin;
@property(nonatomic, copy) NSNumber* loadRightInboxPlugin;
@property(nonatomic, copy) NSNumber* isGmailChatBlocked;
@property(nonatomic, copy) NSNumber* isGooglePlusBlocked;
@property(nonatomic, copy) NSNumber* isGoogleDriveBlocked;
@property(nonatomic, copy) NSNumber* isGoogleCalendarAlertsBlocked;
@property(nonatomic, copy) NSNumber* useSignatures;
@property(nonatomic, copy) NSNumber* signatureAboveQuotedText;

// Booleans, nil when they have never been set. Switching notifications off forgets the account's OAuth grant.
@property(nonatomic, copy) NSNumber* isNotificationEnabled;
@property(nonatomic, copy) NSNumber* isNotifyNewMessages;

// With what counts when they have never been set.
@property(nonatomic) BOOL detectUnreadCountTypeAsBOOL;
@property(nonatomic, readonly) BOOL isGmailChatBlockedAsBOOL;
@property(nonatomic, readonly) BOOL isGooglePlusBlockedAsBOOL;
@property(nonatomic, readonly) BOOL isGoogleDriveBlockedAsBOOL;
@property(nonatomic, readonly) BOOL isGoogleCalendarAlertsBlockedAsBOOL;

// From the keychain, or else what is kept for this process only; nil if missing. Main thread.
@property(nonatomic, readonly) NSString* password;
- (NSString*)keychainPasswordFor:(NSString*)account;
- (void)setPassword:(NSString*)password storeInKeychain:(BOOL)storeInKeychain;

// nil deletes it.
@property(nonatomic, copy) NSString* oauthRefreshToken;

// The system's blue if no colour is stored, or no valid one.
@property(nonatomic, copy) NSColor* color;

// TsRecipient objects, without names.
@property(nonatomic, readonly) NSArray* autoBccRecipients;

@property(nonatomic, readonly) NSSet* downloadItems;
@property(nonatomic, readonly) NSUInteger numberOfDownloadItems;
@property(nonatomic, readonly) NSArray* downloadItemsDefaultSortDescriptors;
- (TsDownloadItem*)addDownloadItemWithPath:(NSString*)path;
- (void)deleteFinishedDownloadItems;
- (void)deletePendingDownloadItems;
- (void)deleteAllDownloadItems;

@property(nonatomic, readonly) NSSet* bookmarks;
@property(nonatomic, readonly) NSArray* bookmarksOrdered;
- (TsBookmark*)addBookmarkForUrl:(NSString*)url title:(NSString*)title;

@property(nonatomic, readonly) NSSet* signatures;
- (TsSignature*)addSignatureForEmail:(NSString*)email name:(NSString*)name;
- (TsSignature*)signatureForEmail:(NSString*)email name:(NSString*)name;
- (NSArray*)signaturesForEmail:(NSString*)email;
- (TsSignature*)defaultSignatureForEmail:(NSString*)email;

@end
