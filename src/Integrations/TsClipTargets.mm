#include "Integrations/TsClipTargets.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Integrations/TsApplications.h"
#include "Platform/Applications.h"
#include "Platform/Cocoa.h"

namespace platform = tessaro::platform;

// A missing text would be formatted as "(null)".
static NSString* Escaped(NSString* text) { return text != nil ? [text ts_escapeForURL] : @""; }

// Without an identifier, the scheme's default handler opens the URL.
static void Open(NSString* url, NSString* identifier) {
  const auto opened = platform::OpenURL(TsStdString(url), TsStdString(identifier));
  if (opened) return;
  NSString* scheme = [url substringToIndex:[url rangeOfString:@":"].location];
  TsLogWarning(@"Couldn't open a %@ link: %s", scheme, opened.error().message.c_str());
}

@implementation TsOmnifocus

+ (NSString*)installedBundleId {
  return TsInstalledBundleId(@[
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
  return TsInstalledBundleId(@[ @"com.todoist.mac.Todoist" ]) != nil;
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"todoist://addtask?content=%@&comment=%@", Escaped(content), Escaped(comment)], nil);
}

@end

@implementation TsThings

+ (NSString*)installedBundleId {
  // The empty entry is kept deliberately.
  return TsInstalledBundleId(@[ @"com.culturedcode.ThingsMac.beta", @"", @"com.culturedcode.ThingsMac" ]);
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"things:///add?title=%@&notes=%@&show-quick-entry=true", Escaped(content),
                                  Escaped(comment)],
       [self installedBundleId]);
}

@end

@implementation TsReceiptsApp

+ (NSString*)installedBundleId {
  return TsInstalledBundleId(@[ @"com.apperdeck.mac.Receipts", @"com.apperdeck.mac.Receipts-setapp" ]);
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
