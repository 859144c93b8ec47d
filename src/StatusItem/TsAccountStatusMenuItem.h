#pragma once

#include "Base/Ref.h"
#import "Platform/Cocoa.h"

// An account's row, with a badge in the account's colour: "!" while the account is in error, else its unread count.
@interface TsAccountStatusMenuItem : NSMenuItem {
  Ref<NSColor> _color;
  NSUInteger _count;
  BOOL _isInError;
}

@property(nonatomic, copy) NSColor* color;
@property(nonatomic) NSUInteger count;
@property(nonatomic) BOOL isInError;

- (instancetype)initWithTitle:(NSString*)title
                        color:(NSColor*)color
                       action:(SEL)action
                keyEquivalent:(NSString*)keyEquivalent;

// Redraws the badge.
- (void)updateImage;

@end
