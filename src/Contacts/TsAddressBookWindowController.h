#pragma once

#include "Base/Ref.h"
#import "Platform/AddressBook.h"
#import "Platform/Cocoa.h"

@class NSDictionary;

// The window in which the user picks contacts. Posts the notification "TsContactEmailAddressesPicked" with the
// controller as its object and, under "addresses", the JSON text of an array of address header items.
@interface TsAddressBookWindowController : NSWindowController {
  Ref<NSDictionary> _translations;
  ABPeoplePickerView* _peoplePickerView;
}

// "window-title", "accept-button-label", "cancel-button-label", "edit-in-contacts-button-label".
@property(nonatomic, retain) NSDictionary* translations;
// Owned by the window.
@property(nonatomic, assign) ABPeoplePickerView* peoplePickerView;

// Later calls ignore the translations.
+ (instancetype)sharedInstanceWithTranslations:(NSDictionary*)translations;

// Shows the window in the middle of the screen; `window` is not used.
- (void)openForWindow:(id)window;

// The text for the key, or the key itself.
- (NSString*)translation:(NSString*)key;

- (IBAction)accept:(id)sender;
- (IBAction)cancel:(id)sender;
- (IBAction)groupDoubleAction:(id)sender;
- (IBAction)nameDoubleAction:(id)sender;

@end
