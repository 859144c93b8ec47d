#import "Integrations/TsDEVONthinkRecord.h"

#include "Integrations/TsApplications.h"
#include "Platform/Cocoa.h"

// The scripting interface of DEVONthink and its records.
@interface NSObject (DEVONthink)
- (id)import:(NSString*)path
            from:(NSString*)from
            name:(NSString*)name
    placeholders:(id)placeholders
              to:(id)group
            type:(unsigned int)type;
- (id)createLocation:(NSString*)name in:(id)database;
- (id)currentDatabase;
- (id)createThumbnailFor:(id)record;
- (id)openWindowForRecord:(id)record;
- (void)setURL:(NSString*)url;
- (void)setAliases:(NSString*)aliases;
@end

static constexpr unsigned int kAllTypes = 'all ';

static NSString* GroupName() {
  auto formatter = Adopt([[NSDateFormatter alloc] init]);
  [formatter setDateFormat:@"yyyy-MM-dd HH:mm:ss"];
  return [NSString
      stringWithFormat:NSLocalizedString(@"Tessaro Import %@", @""), [formatter stringFromDate:[NSDate date]]];
}

static id Import(id application, NSString* path, NSString* name, id group) {
  return [application import:path from:nil name:name placeholders:nil to:group type:kAllTypes];
}

@implementation TsDEVONthinkRecord

+ (NSString*)installedBundleId {
  // The empty entry is kept deliberately.
  return TsInstalledBundleId(@[ @"com.devon-technologies.think3", @"", @"com.devon-technologies.thinkpro2" ]);
}

+ (SBApplication*)application {
  NSString* identifier = [self installedBundleId];
  return identifier != nil ? [SBApplication applicationWithBundleIdentifier:identifier] : nil;
}

+ (instancetype)recordWithTitle:(NSString*)title sourceURL:(NSString*)sourceURL path:(NSString*)path {
  SBApplication* application = [self application];
  id record = Import(application, path, title, nil);
  if (record == nil) return nil;
  [record setURL:sourceURL];
  [static_cast<id>(application) createThumbnailFor:record];
  return Adopt([[self alloc] initWithDelegate:record application:application]).Autoreleased();
}

+ (instancetype)importFiles:(NSArray*)paths {
  if ([paths count] == 0) return nil;
  SBApplication* application = [self application];
  id target = nil;
  if ([paths count] > 1) {
    target = [static_cast<id>(application) createLocation:GroupName()
                                                       in:[static_cast<id>(application) currentDatabase]];
    for (NSString* path in paths) Import(application, path, [path lastPathComponent], target);
  } else {
    NSString* path = [paths objectAtIndex:0];
    target = Import(application, path, [path lastPathComponent], nil);
  }
  if (target == nil) return nil;
  return Adopt([[self alloc] initWithDelegate:target application:application]).Autoreleased();
}

- (instancetype)initWithDelegate:(id)delegate application:(SBApplication*)application {
  self = [super init];
  if (self) {
    _delegate = Retain<NSObject>(delegate);
    _application = Retain(application);
  }
  return self;
}

// Records have no field for the web link: it becomes the alias.
- (void)setWebURL:(NSString*)url {
  [_delegate.get() setAliases:url];
}

- (void)openRecordWindow {
  [static_cast<id>(_application.get()) openWindowForRecord:_delegate.get()];
  [_application activate];
}

@end
