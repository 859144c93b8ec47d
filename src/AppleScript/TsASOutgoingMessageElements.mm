#import "AppleScript/TsASOutgoingMessageElements.h"

#include "Base/TsString.h"
#include "Platform/HFSPath.h"
#include "Platform/StandardDirectories.h"

namespace platform = tessaro::platform;

namespace {

NSString* WithHome(NSString* path) {
  if (![path isEqualToString:@"~"] && ![path hasPrefix:@"~/"]) return [path stringByExpandingTildeInPath];
  return [TsNSString(platform::HomeDirectory().native()) stringByAppendingString:[path substringFromIndex:1]];
}

NSString* NormalizedPath(NSString* path) {
  NSString* expanded = WithHome(path);
  if ([expanded rangeOfString:@":"].location == NSNotFound) return expanded;
  const auto posixPath = platform::PosixPathOfHFSPath(TsStdString(expanded));
  return posixPath ? TsNSString(*posixPath) : expanded;
}

}  // namespace

@implementation TsASOutgoingMessageRecipient

- (instancetype)init {
  self = [super init];
  if (self) {
    [self setAddress:@""];
    [self setName:@""];
  }
  return self;
}

- (NSString*)address {
  return _address;
}

- (void)setAddress:(NSString*)address {
  _address = Copy(address);
}

- (NSString*)name {
  return _name;
}

- (void)setName:(NSString*)name {
  _name = Copy(name);
}

- (NSScriptObjectSpecifier*)objectSpecifier {
  return _objectSpecifier;
}

- (void)setObjectSpecifier:(NSScriptObjectSpecifier*)specifier {
  _objectSpecifier = Retain(specifier);
}

@end

@implementation TsASOutgoingMessageAttachment

- (instancetype)init {
  self = [super init];
  if (self) [self setPath:@""];
  return self;
}

- (NSString*)path {
  return _path;
}

- (void)setPath:(NSString*)path {
  _path = Copy(NormalizedPath(path));
}

- (NSScriptObjectSpecifier*)objectSpecifier {
  return _objectSpecifier;
}

- (void)setObjectSpecifier:(NSScriptObjectSpecifier*)specifier {
  _objectSpecifier = Retain(specifier);
}

@end

@implementation TsASOutgoingMessageSignature

- (NSString*)name {
  return _name;
}

- (void)setName:(NSString*)name {
  _name = Copy(name);
}

- (NSString*)content {
  return _content;
}

- (void)setContent:(NSString*)content {
  _content = Copy(content);
}

@end
