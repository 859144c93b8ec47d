#pragma once

#import <Foundation/NSError.h>
#import <Foundation/NSString.h>

// Structured data crosses the script boundary as JSON, through these two functions. Any thread.

// Compact JSON of an array or a dictionary, autoreleased. Integers are exact, and other numbers have as
// many digits as it takes to read them back. Logs an error and gives nil for anything that JSON can't hold: other
// classes, keys that are no strings, NaN and infinities, containers nested deeper than 512 or within themselves, and
// nil. A lone surrogate is written as U+FFFD.
[[nodiscard]] NSString* TsConvertToJSONString(id object);

// The array or dictionary that `string` describes, autoreleased, with mutable containers at every level. Integers are
// exact up to 64 bits, signed or unsigned; larger ones become doubles. Of keys that come twice the last one counts. An
// escaped lone surrogate is read as U+FFFD.
// For anything else nil, and an NSError of the Cocoa domain, code 3840, through `error`, which may be null.
[[nodiscard]] id TsConvertFromJSONString(NSString* string, NSError** error);
