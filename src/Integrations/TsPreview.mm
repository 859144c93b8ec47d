#import "Integrations/TsPreview.h"

#include "Platform/Printing.h"
#include "Utilities/TsLog.h"
#include "Utilities/TsString.h"

@implementation TsPreview

+ (void)printFile:(NSURL*)url {
  if (!tessaro::platform::PrintFile(TsStdString([url path]))) {
    TsLogWarning(@"com.apple.Preview doesn't know how to print.");
  }
}

@end
