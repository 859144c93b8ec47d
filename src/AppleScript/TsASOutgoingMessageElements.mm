#import "AppleScript/TsASOutgoingMessageElements.h"

#include "Base/TsProperty.h"
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

TS_COPIED(NSString, address, Address)
TS_COPIED(NSString, name, Name)
TS_RETAINED(NSScriptObjectSpecifier, objectSpecifier, ObjectSpecifier)

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

TS_RETAINED(NSScriptObjectSpecifier, objectSpecifier, ObjectSpecifier)

@end

@implementation TsASOutgoingMessageSignature

TS_COPIED(NSString, name, Name)
TS_COPIED(NSString, content, Content)

@end
