#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Names one file or folder. On a Mac these are 80 opaque bytes that follow the object wherever it moves. Here it is the
/// object's absolute path with its device and inode; every call that takes one checks that the path still leads to that
/// object and answers errFSBadFSRef when it does not.
struct FSRef {
    UInt64 device;
    UInt64 inode;
    char path[4096];
};
typedef struct FSRef FSRef;

enum { kFSCatInfoFinderInfo = 0x00000800 };
typedef UInt32 FSCatalogInfoBitmap;

/// The Finder flags that this project changes.
enum { kHasCustomIcon = 0x0400, kIsInvisible = 0x4000 };

typedef struct {
    SInt16 v;
    SInt16 h;
} Point;

typedef struct {
    SInt16 top;
    SInt16 left;
    SInt16 bottom;
    SInt16 right;
} Rect;

/// The 16 bytes of Finder information of a file and of a folder, in the processor's own byte order. The flags lie at
/// byte 8 of both.
typedef struct {
    OSType fileType;
    OSType fileCreator;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
} FileInfo;

typedef struct {
    Rect windowBounds;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
} FolderInfo;

/// The catalogue information of an object, as far as this project asks for it.
typedef struct {
    UInt8 finderInfo[16];
} FSCatalogInfo;

struct HFSUniStr255;
struct FSSpec;

/// Finds the object at a path in UTF-8, following symbolic links. `isDirectory`, when not null, receives whether it is a
/// folder. Errors: fnfErr, dirNFErr (a folder on the way is missing), afpAccessDenied, paramErr (a null or empty path),
/// ioErr.
CF_EXPORT OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/// Reads the information that `whichInfo` asks for (kFSCatInfoFinderInfo or 0). An object without Finder information
/// has zeros. The three last arguments must be null. Errors: errFSBadFSRef, paramErr, ioErr (the stored information has
/// not the size that it must have, or cannot be read).
CF_EXPORT OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                                 struct HFSUniStr255* name, struct FSSpec* spec, FSRef* parent);

/// Stores the Finder information; the 16 bytes of extended Finder information that lie behind it on the disk keep their
/// values. Errors: as for reading, wPrErr on a read-only volume, afpAccessDenied, dskFulErr.
CF_EXPORT OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo);

/// Exchanges the contents of two regular files in place, in one indivisible step. On any error nothing has moved:
/// errFSBadFSRef, errFSNotAFile (one of them is no regular file), diffVolErr, afpAccessDenied, wPrErr,
/// errFSUnknownCall (the file system cannot do it).
CF_EXPORT OSErr FSExchangeObjects(const FSRef* a, const FSRef* b);

CF_EXTERN_C_END
