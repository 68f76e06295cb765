// The classic interfaces' base types, in fixed widths: what was `long` there is 32 bits here.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt32 Fixed;
typedef SInt32 Size;
typedef UInt8 Byte;
typedef SInt8 SignedByte;
/// Flags, each a bit.
typedef UInt32 OptionBits;

/// A fixed block of memory.
typedef char* Ptr;
/// A relocatable block: a pointer to its master pointer, which keeps its address for the block's
/// life. `*handle` is the block.
typedef char** Handle;

/// Pascal strings: a length byte, then that many bytes.
typedef unsigned char Str255[256];
typedef unsigned char Str63[64];
typedef unsigned char Str32[33];
typedef unsigned char Str31[32];
typedef unsigned char* StringPtr;
typedef const unsigned char* ConstStr255Param;
typedef const unsigned char* ConstStr32Param;
typedef const unsigned char* ConstStr31Param;

typedef struct Point {
    SInt16 v;
    SInt16 h;
} Point;

typedef struct Rect {
    SInt16 top;
    SInt16 left;
    SInt16 bottom;
    SInt16 right;
} Rect;

typedef struct RGBColor {
    UInt16 red;
    UInt16 green;
    UInt16 blue;
} RGBColor;

/// Names a process; two words that mean nothing to the holder.
typedef struct ProcessSerialNumber {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
} ProcessSerialNumber;

/// A leaf name: `length` UTF-16 units, at most 255.
typedef struct HFSUniStr255 {
    UInt16 length;
    UniChar unicode[255];
} HFSUniStr255;

/// Seconds since 1904-01-01 00:00:00 UTC as a 48-bit count, and 1/65536 seconds. Two-byte packing.
#pragma pack(push, 2)
typedef struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
} UTCDateTime;
#pragma pack(pop)

typedef SInt16 ScriptCode;
typedef UInt32 TextEncoding;
typedef TextEncoding TextEncodingHint;
enum { kTextEncodingUnknown = 0xFFFF };

/// 1/60 seconds since some start of the machine.
OSA_PLATFORM_EXPORT UInt32 TickCount(void);

#ifdef __cplusplus
}
#endif
