#pragma once

#import <Foundation/Foundation.h>

#include "Base/Ref.h"

// The page or mail that is handed to another application. Any text may be nil.
struct TsClippedPage {
  Ref<NSString> url;     // opens it in this client
  Ref<NSString> webURL;  // opens it in the web interface
  Ref<NSString> title;
  Ref<NSString> html;
  Ref<NSString> htmlPath;
  Ref<NSString> account;
  Ref<NSString> emlPath;
  Ref<NSMutableArray> attachments;  // paths
};

// The names that TsClipPage() takes and whose applications are installed, in a fixed order.
[[nodiscard]] NSArray* TsInstalledClippers();

// Hand the page to the application of that name, and a file to an application. An application that hangs delays nothing
// but what is handed to it later. Main thread only.
void TsClipPage(NSString* name, const TsClippedPage& page);
void TsImportIntoApplication(NSString* identifier, NSString* path);

// Alerts the user that the installed Evernote can't be scripted. Main thread only.
void showEvernoteError();
