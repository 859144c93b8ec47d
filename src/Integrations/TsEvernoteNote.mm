#import "Integrations/TsEvernoteNote.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Integrations/TsApplications.h"
#include "Platform/Cocoa.h"
#include "Platform/ZipArchive.h"

namespace platform = tessaro::platform;

static NSString* const kEvernote = @"com.evernote.Evernote";

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
  return TsInstalledBundleId(@[ kEvernote ]) != nil;
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
