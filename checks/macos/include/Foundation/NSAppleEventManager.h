#pragma once

#include <Foundation/NSObject.h>

using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEKeyword = FourCharCode;
using DescType = FourCharCode;
enum : AEKeyword { keyDirectObject = '----' };

using NSAppleEventSendOptions = NSUInteger;
enum : NSAppleEventSendOptions { NSAppleEventSendNoReply = 1, NSAppleEventSendWaitForReply = 3 };
enum : DescType {
  typeApplicationBundleID = 'bund',
  typeFileURL = 'furl',
  typeType = 'type',
  typeUTF8Text = 'utf8',
  typeObjectSpecifier = 'obj ',
};

@interface NSAppleEventDescriptor : NSObject <NSCopying>
+ (NSAppleEventDescriptor*)appleEventWithEventClass:(AEEventClass)eventClass
                                            eventID:(AEEventID)eventID
                                   targetDescriptor:(NSAppleEventDescriptor*)target
                                           returnID:(SInt16)returnID
                                      transactionID:(SInt32)transactionID;
+ (NSAppleEventDescriptor*)descriptorWithBundleIdentifier:(NSString*)identifier;
+ (NSAppleEventDescriptor*)descriptorWithFileURL:(NSURL*)url;
+ (NSAppleEventDescriptor*)descriptorWithString:(NSString*)string;
+ (NSAppleEventDescriptor*)descriptorWithTypeCode:(OSType)type;
+ (NSAppleEventDescriptor*)descriptorWithEnumCode:(OSType)code;
+ (NSAppleEventDescriptor*)recordDescriptor;
+ (NSAppleEventDescriptor*)listDescriptor;
+ (NSAppleEventDescriptor*)nullDescriptor;
- (void)insertDescriptor:(NSAppleEventDescriptor*)descriptor atIndex:(NSInteger)index;
- (void)setDescriptor:(NSAppleEventDescriptor*)descriptor forKeyword:(AEKeyword)keyword;
- (void)setParamDescriptor:(NSAppleEventDescriptor*)descriptor forKeyword:(AEKeyword)keyword;
- (NSAppleEventDescriptor*)paramDescriptorForKeyword:(AEKeyword)keyword;
- (NSAppleEventDescriptor*)coerceToDescriptorType:(DescType)type;
@property(readonly, copy) NSString* stringValue;
- (NSAppleEventDescriptor*)sendEventWithOptions:(NSAppleEventSendOptions)options
                                        timeout:(NSTimeInterval)timeout
                                          error:(NSError**)error;
@end

@interface NSAppleEventManager : NSObject
+ (NSAppleEventManager*)sharedAppleEventManager;
- (void)setEventHandler:(id)handler
            andSelector:(SEL)selector
          forEventClass:(AEEventClass)eventClass
             andEventID:(AEEventID)eventID;
- (void)removeEventHandlerForEventClass:(AEEventClass)eventClass andEventID:(AEEventID)eventID;
@end
