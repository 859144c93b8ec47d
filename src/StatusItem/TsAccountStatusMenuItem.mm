#import "StatusItem/TsAccountStatusMenuItem.h"

#include "StatusItem/AccountBadge.h"

namespace {

constexpr NSUInteger kMostCounted = 99;

}  // namespace

@implementation TsAccountStatusMenuItem

- (instancetype)initWithTitle:(NSString*)title
                        color:(NSColor*)color
                       action:(SEL)action
                keyEquivalent:(NSString*)keyEquivalent {
  self = [super initWithTitle:title action:action keyEquivalent:keyEquivalent];
  if (self == nil) return nil;
  [self setColor:color];
  [self setCount:0];
  [self setIsInError:NO];
  return self;
}

- (NSColor*)color {
  return _color;
}

- (void)setColor:(NSColor*)color {
  if (color == _color) return;
  _color = Copy(color);
  [self updateImage];
}

- (NSUInteger)count {
  return _count;
}

- (void)setCount:(NSUInteger)count {
  _count = count;
  [self updateImage];
}

- (BOOL)isInError {
  return _isInError;
}

- (void)setIsInError:(BOOL)isInError {
  _isInError = isInError;
  [self updateImage];
}

- (NSString*)badgeText {
  if (_isInError) return @"!";
  if (_count == 0 || _count > kMostCounted) return nil;
  return [NSString stringWithFormat:@"%ld", static_cast<long>(_count)];
}

- (void)updateImage {
  [self setImage:AccountBadge(_color, [self badgeText])];
}

@end
