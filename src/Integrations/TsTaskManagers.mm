#include "Integrations/TsTaskManagers.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#import "Extensions/NSString+TsPath.h"
#include "Integrations/TsInstalledApplication.h"
#include "Platform/Applications.h"

// nil as `identifier` stands for the scheme's default handler.
static void Open(NSString* url, NSString* identifier) {
  if (tessaro::platform::OpenURL(TsStdString(url), TsStdString(identifier))) return;
  TsLogWarning(@"Nobody opens %@ links", [url substringToIndex:[url rangeOfString:@":"].location]);
}

@implementation TsOmnifocus

+ (NSString*)installedBundleId {
  return TsInstalledBundleId(@[
    @"com.omnigroup.OmniFocus3", @"com.omnigroup.OmniFocus3.MacAppStore", @"com.omnigroup.OmniFocus2",
    @"com.omnigroup.OmniFocus2.MacAppStore"
  ]);
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString
           stringWithFormat:@"omnifocus:///add?name=%@&note=%@", [content ts_escapeForURL], [comment ts_escapeForURL]],
       [self installedBundleId]);
}

@end

@implementation TsTodoist

+ (BOOL)isInstalled {
  return TsInstalledBundleId(@[ @"com.todoist.mac.Todoist" ]) != nil;
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"todoist://addtask?content=%@&comment=%@", [content ts_escapeForURL],
                                  [comment ts_escapeForURL]],
       nil);
}

@end

@implementation TsThings

+ (NSString*)installedBundleId {
  // The empty entry is kept deliberately.
  return TsInstalledBundleId(@[ @"com.culturedcode.ThingsMac.beta", @"", @"com.culturedcode.ThingsMac" ]);
}

+ (void)addActionWithContent:(NSString*)content comment:(NSString*)comment {
  Open([NSString stringWithFormat:@"things:///add?title=%@&notes=%@&show-quick-entry=true", [content ts_escapeForURL],
                                  [comment ts_escapeForURL]],
       [self installedBundleId]);
}

@end
