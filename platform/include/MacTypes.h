#pragma once

// The fixed-width names and the common result codes of the Mac's MacTypes.h and MacErrors.h.

#include <stdint.h>

typedef uint8_t UInt8;
typedef uint16_t UInt16;
typedef int16_t SInt16;
typedef uint32_t UInt32;
typedef int32_t SInt32;
typedef uint64_t UInt64;
typedef int64_t SInt64;

typedef UInt8 Boolean;
typedef UInt16 UniChar;
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;
typedef SInt16 OSErr;
typedef SInt32 OSStatus;
typedef UInt32 ItemCount;
typedef UInt32 OptionBits;
typedef char* Ptr;
typedef long Size;
typedef unsigned char Str255[256];
typedef unsigned char* StringPtr;

/// Four ASCII characters as the 32-bit number whose most significant byte is the first of them.
#define CV_FOUR_CHAR_CODE(a, b, c, d) ((a)*0x1000000u + (b)*0x10000u + (c)*0x100u + (d)*1u)

enum {
    noErr = 0,
    paramErr = -50,
    memFullErr = -108,
    dskFulErr = -34,
    ioErr = -36,
    bdNamErr = -37,
    fnfErr = -43,
    wPrErr = -44,
    afpAccessDenied = -5000,
    dirNFErr = -120,
    notAFileErr = -1302,
    diffVolErr = -1303,
    errFSBadFSRef = -1401,
    errFSUnknownCall = -1400,
    procNotFound = -600
};
