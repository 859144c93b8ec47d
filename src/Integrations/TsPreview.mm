#import "Integrations/TsPreview.h"

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/Printing.h"

@implementation TsPreview

+ (void)printFile:(NSURL*)url {
  if (tessaro::platform::PrintFile(TsStdString([url path]))) return;
  TsLogWarning(@"com.apple.Preview doesn't know how to print.");
}

@end
