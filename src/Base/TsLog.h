#pragma once

#include "Base/TsLogging.h"

// Log calls that note the place they stand in.
//
// TsLogText* take UTF-8 text (std::string_view) and serve plain C++; the others take an NSString format with its
// arguments and serve Objective-C++.
#define TS_LOG_TEXT(flag_, text_) \
  TsLogFacility::Shared().Log(    \
      {.text = (text_), .flag = (flag_), .file = __FILE__, .function = __PRETTY_FUNCTION__, .line = __LINE__})

#define TsLogTextError(text) TS_LOG_TEXT(TsLogFlag::Error, text)
#define TsLogTextWarning(text) TS_LOG_TEXT(TsLogFlag::Warning, text)
#define TsLogTextInfo(text) TS_LOG_TEXT(TsLogFlag::Info, text)
#define TsLogTextDebug(text) TS_LOG_TEXT(TsLogFlag::Debug, text)

#ifdef __OBJC__

#import <Foundation/NSString.h>

void TsLogFormat(TsLogFlag flag, const char* file, const char* function, int line, NSString* format, ...)
    NS_FORMAT_FUNCTION(5, 6);

#define TS_LOG(flag_, ...) TsLogFormat(flag_, __FILE__, __PRETTY_FUNCTION__, __LINE__, __VA_ARGS__)

#define TsLogError(...) TS_LOG(TsLogFlag::Error, __VA_ARGS__)
#define TsLogWarning(...) TS_LOG(TsLogFlag::Warning, __VA_ARGS__)
#define TsLogInfo(...) TS_LOG(TsLogFlag::Info, __VA_ARGS__)
#define TsLogDebug(...) TS_LOG(TsLogFlag::Debug, __VA_ARGS__)

#endif
