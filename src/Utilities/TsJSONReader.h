#pragma once

#import <Foundation/Foundation.h>

// See TsConvertFromJSONString().
[[nodiscard]] id TsReadJSON(NSString* string, NSError** error);
