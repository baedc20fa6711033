#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Names one file, folder or symbolic link. On a Mac these are 80 opaque bytes that follow the object wherever it
/// moves. Here it is the object's absolute path with its device and inode; every call that takes one checks that the
/// path still leads to that object and returns errFSBadFSRef when it does not (moved, removed, or another put in its
/// place).
struct FSRef {
    UInt64 device;    ///< st_dev
    UInt64 inode;     ///< st_ino
    char path[4096];  ///< absolute, ends with a NUL
};
typedef struct FSRef FSRef;

enum { kFSCatInfoFinderInfo = 0x00000800 };
typedef UInt32 FSCatalogInfoBitmap;

/// The Finder flags that this project changes.
enum { kHasCustomIcon = 0x0400, kIsInvisible = 0x4000 };

/// A place on the screen, or in a window, in pixels.
typedef struct Point {
    SInt16 v;  ///< down from the top
    SInt16 h;  ///< from the left
} Point;

/// The 16 bytes of Finder information of a file, in the processor's own byte order. A folder has the rectangle of its
/// window in place of the first two fields, so that its flags lie at byte 8, too.
typedef struct FileInfo {
    OSType fileType;       ///< 0: none
    OSType fileCreator;    ///< 0: none
    UInt16 finderFlags;    ///< kHasCustomIcon, kIsInvisible, ...
    Point location;        ///< of the icon in its folder's window
    UInt16 reservedField;  ///< the Finder's own
} FileInfo;

/// The catalogue information of an object, as far as this project asks for it.
typedef struct FSCatalogInfo {
    UInt8 finderInfo[16];  ///< a FileInfo
} FSCatalogInfo;

struct HFSUniStr255;
struct FSSpec;

enum { kFSPathMakeRefDefaultOptions = 0, kFSPathMakeRefDoNotFollowLeafSymlink = 0x01 };

/// Finds the object at an absolute path in UTF-8, following symbolic links. Slashes at the end of the path do not
/// matter, whatever the path names. `isDirectory`, when not null, receives whether it is a folder. On an error `ref`
/// and `isDirectory` keep their values: fnfErr (no such object), dirNFErr (a folder on the way is missing, or is not a
/// folder), afpAccessDenied, bdNamErr (the path or a name in it is too long), paramErr (a null, empty or relative path,
/// or a null `ref`), ioErr.
CF_EXPORT OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);

/// The same; with kFSPathMakeRefDoNotFollowLeafSymlink, a symbolic link at the end of the path is not followed and is
/// itself the object found. Other options give paramErr.
CF_EXPORT OSStatus FSPathMakeRefWithOptions(const UInt8* path, OptionBits options, FSRef* ref, Boolean* isDirectory);

/// Reads the information that `whichInfo` asks for: kFSCatInfoFinderInfo, or 0 to learn only whether the reference
/// still holds. An object without Finder information has zeros. The three last arguments must be null. Errors:
/// errFSBadFSRef, paramErr, afpAccessDenied, ioErr (the stored information does not have the size that it must have, or
/// cannot be read).
CF_EXPORT OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                                 struct HFSUniStr255* name, struct FSSpec* spec, FSRef* parent);

/// Stores the Finder information; the 16 bytes of extended Finder information that follow it on the disk keep their
/// values. On any error the stored information is untouched. Errors: as for reading, wPrErr on a read-only volume,
/// dskFulErr, errFSUnknownCall (the file system keeps no such information).
CF_EXPORT OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo);

/// Exchanges two regular files in place, in one indivisible step: each path then holds the other's contents and
/// identity (owner, mode, times, Finder information). Both references are out of date afterwards. Two references to the
/// same file give noErr, and nothing moves. On any error nothing has moved: errFSBadFSRef, notAFileErr (one of them is
/// not a regular file), paramErr, diffVolErr, afpAccessDenied, wPrErr, errFSUnknownCall (the file system cannot do it),
/// ioErr.
CF_EXPORT OSErr FSExchangeObjects(const FSRef* a, const FSRef* b);

CF_EXTERN_C_END
