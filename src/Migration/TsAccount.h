#pragma once

#import <AppKit/NSColor.h>
#import <AppKit/NSImage.h>

#import "Migration/TsManagedObject.h"

@class TsAccount;

@interface TsDownloadItem : TsManagedObject

@property(nonatomic, readonly) TsAccount* account;

// Whether all expected bytes have been received.
@property(nonatomic, readonly) BOOL isFinished;

// For display. They follow from the stored values, and change with them.
@property(nonatomic, readonly) NSString* name;
@property(nonatomic, readonly) NSImage* icon;
@property(nonatomic, readonly) NSString* sizeHumanReadable;
@property(nonatomic, readonly) NSNumber* progressInPercents;  // 0 to 100
@property(nonatomic, readonly) NSURL* previewItemURL;

@end

@interface TsDownloadItem (Attributes)
@property(nonatomic, copy) NSString* path;
@property(nonatomic, copy) NSDate* createdAt;
@property(nonatomic, copy) NSNumber* bytesReceived;
@property(nonatomic, copy) NSNumber* bytesExpected;  // nil or 0 while unknown
@end

@interface TsBookmark : TsManagedObject

@property(nonatomic, readonly) TsAccount* account;

@end

@interface TsSignature : TsManagedObject

@property(nonatomic, readonly) TsAccount* account;

@end

// A mail account of the previous version. Leaves its store with the password in clear; the bookmarks are in no
// particular order then.
@interface TsAccount : TsManagedObject

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

// TsManagedObject makes accessors for every attribute; these are called by name.

@interface TsBookmark (Attributes)
@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* title;
@property(nonatomic, copy) NSString* url;
@end

@interface TsSignature (Attributes)
@property(nonatomic, copy) NSString* email;
@property(nonatomic, copy) NSString* name;
@property(nonatomic, copy) NSNumber* useByDefault;  // a boolean
@end

@interface TsAccount (Attributes)
@property(nonatomic, copy) NSNumber* order;
@property(nonatomic, copy) NSString* username;  // the e-mail address
@property(nonatomic, copy) NSString* autoBCC;
@property(nonatomic, copy) NSData* colorData;
@property(nonatomic, copy) NSNumber* detectUnreadCountType;
@property(nonatomic, copy) NSNumber* isGmailChatBlocked;
@property(nonatomic, copy) NSNumber* isGooglePlusBlocked;
@property(nonatomic, copy) NSNumber* isGoogleDriveBlocked;
@property(nonatomic, copy) NSNumber* isGoogleCalendarAlertsBlocked;
// Under these names the previous version stores the two notification switches.
@property(nonatomic, copy) NSNumber* autoAuthenticate;
@property(nonatomic, copy) NSNumber* notificationUseGrowl;
@end
