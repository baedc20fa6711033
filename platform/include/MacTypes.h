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

typedef UInt8 Boolean;   ///< 0 is false, anything else true
typedef UInt16 UniChar;  ///< a UTF-16 unit
typedef UInt32 FourCharCode;
typedef FourCharCode OSType;  ///< the type or creator of a file
typedef SInt16 OSErr;         ///< a result code below
typedef SInt32 OSStatus;      ///< a result code below
typedef UInt32 ItemCount;
typedef UInt32 OptionBits;
typedef char* Ptr;
typedef long Size;                  ///< in bytes
typedef unsigned char Str255[256];  ///< a length byte, then so many bytes of text
typedef unsigned char* StringPtr;   ///< to a Str255

/// Four ASCII characters as the 32-bit number whose most significant byte is the first of them.
#define CV_FOUR_CHAR_CODE(a, b, c, d) ((a)*0x1000000u + (b)*0x10000u + (c)*0x100u + (d)*1u)

/// Result codes. What they mean for a function, its comment says.
enum {
    noErr = 0,                 ///< success
    paramErr = -50,            ///< an argument is invalid
    memFullErr = -108,         ///< not enough memory
    dskFulErr = -34,           ///< the disk is full
    ioErr = -36,               ///< reading or writing failed
    bdNamErr = -37,            ///< a name is invalid or too long
    fnfErr = -43,              ///< no such file or folder
    wPrErr = -44,              ///< the volume is read-only
    afpAccessDenied = -5000,   ///< the user may not do that
    dirNFErr = -120,           ///< a folder on the way is missing
    notAFileErr = -1302,       ///< not a file
    diffVolErr = -1303,        ///< the objects are on different volumes
    errFSBadFSRef = -1401,     ///< the reference does not lead to its object any more
    errFSUnknownCall = -1400,  ///< the file system cannot do that
    procNotFound = -600        ///< no such process
};
