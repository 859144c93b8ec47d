#include "Files/TsFileWriter.h"

#import <Foundation/Foundation.h>

#include "Base/TsLog.h"
#include "Base/TsString.h"
#include "Platform/FileWriting.h"

namespace platform = tessaro::platform;

Result<void> TsWriteBytes(NSString* path, std::string_view bytes, TsWriteMode mode) {
  const auto write = mode == TsWriteMode::Append ? platform::AppendToFile : platform::ReplaceFile;
  const auto written = write(TsStdString(path), bytes, platform::NewFile::AsUsual);
  if (written) return {};
  const std::string text = TsStdString(path) + ": " + written.error().message;
  TsLogError(@"Couldn't write %s", text.c_str());
  return Fail(text);
}
