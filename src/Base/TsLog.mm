#include "Base/TsLog.h"

#import <Foundation/Foundation.h>

#include "Base/Ref.h"
#include "Base/TsString.h"

void TsLogFormat(TsLogFlag flag, const char* file, const char* function, int line, NSString* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const auto message = Adopt([[NSString alloc] initWithFormat:format arguments:arguments]);
  va_end(arguments);
  const std::string text = TsStdString(message);
  TsLogFacility::Shared().Log({.text = text, .flag = flag, .file = file, .function = function, .line = line});
}
