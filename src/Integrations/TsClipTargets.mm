#include "Integrations/TsClipTargets.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"
#include "Platform/MainQueue.h"
#include "Platform/WindowServer.h"
#include "Platform/ZipArchive.h"

namespace platform = tessaro::platform;

namespace {

NSString* const kEvernote = @"com.evernote.Evernote";
constexpr unsigned int kAllTypes = 'all ';

// The first bundle identifier whose application is installed; nil when none is.
NSString* InstalledBundleId(NSArray* identifiers) {
  for (NSString* identifier in identifiers) {
    if (platform::FindApplication(TsStdString(identifier))) return identifier;
  }
  return nil;
}

NSString* GroupName() {
  auto formatter = Adopt([[NSDateFormatter alloc] init]);
  [formatter setDateFormat:@"yyyy-MM-dd HH:mm:ss"];
  return [NSString
      stringWithFormat:NSLocalizedString(@"Tessaro Import %@", @""), [formatter stringFromDate:[NSDate date]]];
}

NSString* Escaped(NSString* text) { return [TsOrEmpty(text) ts_escapeForURL]; }

// Without an identifier, the scheme's default handler opens the URL.
void Open(NSString* url, NSString* identifier) {
  const auto opened = platform::OpenURL(TsStdString(url), TsStdString(identifier));
  if (opened) return;
  NSString* scheme = [url substringToIndex:[url rangeOfString:@":"].location];
  TsLogWarning(@"Couldn't open a %@ link: %s", scheme, opened.error().message.c_str());
}

}  // namespace

void TsOpenWith(NSString* path, NSString* applicationPath) {
  // Without this, no path would mean the file's default application.
  if (applicationPath == nil) return TsLogWarning(@"Couldn't open %@: the application isn't installed", path);
  const auto opened = platform::OpenFile(TsStdString(path), TsStdString(applicationPath));
  if (!opened) {
    return TsLogWarning(@"Couldn't open %@ with %@: %s", path, applicationPath, opened.error().message.c_str());
  }
  platform::MainQueue::Shared().Post([] {
    if (platform::IsWindowServerAvailable()) [NSApp deactivate];
  });
}

// The scripting interface of Evernote and its notes.
@interface NSObject (Evernote)
- (id)createNoteFromFile:(id)file
                 fromUrl:(NSString*)url
                withText:(NSString*)text
                withHtml:(NSString*)html
                withEnml:(NSString*)enml
                   title:(NSString*)title
                notebook:(id)notebook
                    tags:(id)tags
             attachments:(id)attachments
                 created:(NSDate*)created;
- (void)openNoteWindowWith:(id)note;
- (void)setSourceURL:(NSString*)url;
- (void)appendText:(NSString*)text html:(NSString*)html attachment:(id)attachment;
@end

@implementation TsEvernoteNote

+ (BOOL)isInstalled {
  return InstalledBundleId(@[ kEvernote ]) != nil;
}

+ (instancetype)noteWithTitle:(NSString*)title sourceURL:(NSString*)sourceURL {
  SBApplication* application = [SBApplication applicationWithBundleIdentifier:kEvernote];
  const SEL create = @selector(createNoteFromFile:
                                          fromUrl:withText:withHtml:withEnml:title:notebook:tags:attachments:created:);
  if (![application respondsToSelector:create]) return nil;
  id created = [static_cast<id>(application) createNoteFromFile:nil
                                                        fromUrl:nil
                                                       withText:nil
                                                       withHtml:@""
                                                       withEnml:nil
                                                          title:title
                                                       notebook:nil
                                                           tags:nil
                                                    attachments:nil
                                                        created:nil];
  if (created == nil) return nil;
  [created setSourceURL:sourceURL];
  TsEvernoteNote* note = Adopt([[self alloc] init]).Autoreleased();
  note->_application = Retain(application);
  note->_delegate = Retain<NSObject>(created);
  return note;
}

- (void)appendLink:(NSString*)text url:(NSString*)url {
  [self appendHtml:[NSString stringWithFormat:@"<a href='%@'>%@</a><hr>", url, text]];
}

- (void)appendHtml:(NSString*)html {
  [_delegate.get() appendText:nil html:html attachment:nil];
}

- (void)appendFile:(NSString*)path {
  [_delegate.get() appendText:nil html:nil attachment:[NSURL fileURLWithPath:path]];
}

- (void)appendAttachment:(NSString*)path {
  if (![path ts_isZipPath]) return [self appendFile:path];
  NSString* folder =
      [[NSTemporaryDirectory() stringByAppendingPathComponent:[path lastPathComponent]] ts_makeUniquePath];
  if (const auto unpacked = platform::UnpackZip(TsStdString(path), TsStdString(folder), {}); !unpacked) {
    TsLogWarning(@"Couldn't unzip all of %@: %s", path, unpacked.error().message.c_str());
  }
  for (NSString* item in [[NSFileManager defaultManager] enumeratorAtPath:folder]) {
    [self appendFile:[folder stringByAppendingPathComponent:item]];
  }
  [[NSFileManager defaultManager] removeItemAtPath:folder error:nullptr];
}

- (void)openNoteWindow {
  [static_cast<id>(_application.get()) openNoteWindowWith:_delegate.get()];
  [_application activate];
}

@end

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

static id Import(id application, NSString* path, NSString* name, id group) {
  return [application import:path from:nil name:name placeholders:nil to:group type:kAllTypes];
}

@implementation TsDEVONthinkRecord

+ (NSString*)installedBundleId {
  // The empty entry is kept deliberately.
  return InstalledBundleId(@[ @"com.devon-technologies.think3", @"", @"com.devon-technologies.thinkpro2" ]);
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

@implementation TsOmnifocus

+ (NSString*)installedBundleId {
  return InstalledBundleId(@[
    @"com.omnigroup.OmniFocus3", @"com.omnigroup.OmniFocus3.MacAppStore", @"com.omnigroup.OmniFocus2",
    @"com.omnigroup.OmniFocus2.MacAppStore"
  ]);
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"omnifocus:///add?name=%@&note=%@", Escaped(content), Escaped(comment)],
       [self installedBundleId]);
}

@end

@implementation TsTodoist

+ (BOOL)isInstalled {
  return InstalledBundleId(@[ @"com.todoist.mac.Todoist" ]) != nil;
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"todoist://addtask?content=%@&comment=%@", Escaped(content), Escaped(comment)], nil);
}

@end

@implementation TsThings

+ (NSString*)installedBundleId {
  // The empty entry is kept deliberately.
  return InstalledBundleId(@[ @"com.culturedcode.ThingsMac.beta", @"", @"com.culturedcode.ThingsMac" ]);
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"things:///add?title=%@&notes=%@&show-quick-entry=true", Escaped(content),
                                  Escaped(comment)],
       [self installedBundleId]);
}

@end

@implementation TsReceiptsApp

+ (NSString*)installedBundleId {
  return InstalledBundleId(@[ @"com.apperdeck.mac.Receipts", @"com.apperdeck.mac.Receipts-setapp" ]);
}

+ (NSURL*)urlForApplication {
  const auto application = platform::FindApplication(TsStdString([self installedBundleId]));
  return application ? [NSURL fileURLWithPath:TsNSString(application->path)] : nil;
}

+ (void)importEMLWithPath:(NSString*)path {
  TsOpenWith(path, [[self urlForApplication] path]);
}

@end

@implementation TsPreview

+ (void)printFile:(NSURL*)url {
  if (platform::PrintFile(TsStdString([url path]))) return;
  TsLogWarning(@"com.apple.Preview doesn't know how to print.");
}

@end

@implementation TsClipboard

+ (void)copy:(NSString*)text {
  NSLog(@">>> copy to pasteboard %@", text);
  NSPasteboard* pasteboard = [NSPasteboard generalPasteboard];
  [pasteboard declareTypes:@[ NSStringPboardType ] owner:nil];
  [pasteboard setString:text forType:NSStringPboardType];
}

@end
