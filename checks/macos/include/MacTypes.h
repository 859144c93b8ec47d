#pragma once

#include <stddef.h>
#include <stdint.h>

// The names of the Carbon age: every file that imports Foundation has them, and must not use them for its own.
using UInt8 = uint8_t;
using SInt8 = int8_t;
using UInt16 = uint16_t;
using SInt16 = int16_t;
using UInt32 = unsigned int;
using SInt32 = int;
using UInt64 = unsigned long long;
using OSStatus = SInt32;
using OSErr = SInt16;
using OSType = UInt32;
using FourCharCode = UInt32;
using ItemCount = unsigned long;
using ByteCount = unsigned long;
using OptionBits = UInt32;
using Boolean = unsigned char;
using UniChar = UInt16;
using UniCharCount = unsigned long;
struct Point {
  short v;
  short h;
};
using Size = long;
using Style = unsigned char;
using StringPtr = unsigned char*;

enum { noErr = 0 };
