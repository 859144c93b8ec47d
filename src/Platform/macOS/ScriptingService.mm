#include "Platform/ScriptingService.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"

// Cocoa scripting serves the application object by itself, on the main thread, where the host's Info.plist has
// NSAppleScriptEnabled and OSAScriptingDefinition, and its bundle the definition: see docs/macos.md. The user consents
// to each application that sends events. Links arrive through the host, whose own handler has kAEGetURL.
namespace tessaro::platform {

void OfferScripting(LinkHandler) {
  if ([[[NSBundle mainBundle] objectForInfoDictionaryKey:@"NSAppleScriptEnabled"] boolValue]) return;
  TsLogInfo(@"The host's Info.plist has no NSAppleScriptEnabled: other applications can't script this one");
}

}  // namespace tessaro::platform
