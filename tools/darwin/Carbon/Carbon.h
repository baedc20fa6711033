#pragma once

// Carbon as a Mac's own headers declare it, as far as this project calls it, for tools/check-darwin.

// Until 10.13, this brought the macros check, verify, require and their kin as well.
#define __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES 1
#include <AssertMacros.h>
#include <CoreFoundation/CoreFoundation.h>

extern "C" {

#pragma pack(push, 2)  // the records' layout since the first Macs, on Intel as well

// TextCommon.h, UTCUtils.h, Files.h, Finder.h

struct FSRef {
    UInt8 hidden[80];
};
typedef struct FSRef FSRef;
typedef struct FSSpec* FSSpecPtr;
typedef struct HFSUniStr255 HFSUniStr255;

typedef UInt32 TextEncoding;
typedef SInt16 FSVolumeRefNum;
typedef struct __FSFileSecurity* FSFileSecurityRef;

struct UTCDateTime {
    UInt16 highSeconds;
    UInt32 lowSeconds;
    UInt16 fraction;
};
typedef struct UTCDateTime UTCDateTime;

struct FSPermissionInfo {
    UInt32 userID;
    UInt32 groupID;
    UInt8 reserved1;
    UInt8 userAccess;
    UInt16 mode;
    FSFileSecurityRef fileSec;
};
typedef struct FSPermissionInfo FSPermissionInfo;

struct FSCatalogInfo {
    UInt16 nodeFlags;
    FSVolumeRefNum volume;
    UInt32 parentDirID;
    UInt32 nodeID;
    UInt8 sharingFlags;
    UInt8 userPrivileges;
    UInt8 reserved1;
    UInt8 reserved2;
    UTCDateTime createDate;
    UTCDateTime contentModDate;
    UTCDateTime attributeModDate;
    UTCDateTime accessDate;
    UTCDateTime backupDate;
#if __LP64__
    FSPermissionInfo permissions;
#else
    UInt32 permissions[4];
#endif
    UInt8 finderInfo[16];
    UInt8 extFinderInfo[16];
    UInt64 dataLogicalSize;
    UInt64 dataPhysicalSize;
    UInt64 rsrcLogicalSize;
    UInt64 rsrcPhysicalSize;
    UInt32 valence;
    TextEncoding textEncodingHint;
};
typedef struct FSCatalogInfo FSCatalogInfo;
static_assert(sizeof(FSCatalogInfo) == (sizeof(void*) == 4 ? 144 : 148));

typedef UInt32 FSCatalogInfoBitmap;
// The second one makes them int.
enum { kFSCatInfoFinderInfo = 0x00000800, kFSCatInfoReserved = (int)0xFFFC0000 };
enum { kFSPathMakeRefDefaultOptions = 0, kFSPathMakeRefDoNotFollowLeafSymlink = 0x01 };

CF_EXPORT OSStatus FSPathMakeRefWithOptions(const UInt8* path, OptionBits options, FSRef* ref, Boolean* isDirectory)
    CV_DEPRECATED(10.4, 10.8);
CF_EXPORT OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                                 HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef) CV_DEPRECATED(10.0, 10.8);
CF_EXPORT OSErr FSSetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, const FSCatalogInfo* catalogInfo)
    CV_DEPRECATED(10.0, 10.8);
CF_EXPORT OSErr FSExchangeObjects(const FSRef* ref, const FSRef* destRef) CV_DEPRECATED(10.0, 10.8);

enum { kHasCustomIcon = 0x0400, kIsInvisible = 0x4000 };
struct FileInfo {
    OSType fileType;
    OSType fileCreator;
    UInt16 finderFlags;
    Point location;
    UInt16 reservedField;
};
typedef struct FileInfo FileInfo;

// AEDataModel.h, AEInteraction.h, AEObjects.h, AEPackObject.h, AERegistry.h, AppleEvents.h, Folders.h

typedef ResType DescType;
typedef FourCharCode AEKeyword;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;
typedef SInt32 AESendMode;
typedef SInt16 AESendPriority;
typedef struct OpaqueAEDataStorageType* AEDataStorageType;
typedef AEDataStorageType* AEDataStorage;
struct AEDesc {
    DescType descriptorType;
    AEDataStorage dataHandle;
};
typedef struct AEDesc AEDesc;
typedef AEDesc AEAddressDesc;
typedef AEDesc AppleEvent;
typedef Boolean (*AEIdleUPP)(struct EventRecord* event, SInt32* sleepTime, struct OpaqueRgnHandle** mouseRgn);
typedef Boolean (*AEFilterUPP)(struct EventRecord* event, SInt32 returnID, AETransactionID transactionID,
                               const AEAddressDesc* sender);

enum { typeNull = 'null', typeType = 'type', typeFSRef = 'fsrf', typeApplSignature = 'sign' };
enum { keyDirectObject = '----', keyAEInsertHere = 'insh' };
enum { kAECoreSuite = 'core', kAEMove = 'move', cObject = 'cobj', formPropertyID = 'prop', kTrashFolderType = 'trsh' };
enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0 };
enum { kAEWaitReply = 0x00000003 };
enum { kAENormalPriority = 0x00000000 };
enum { kAEDefaultTimeout = -1 };

CF_EXPORT OSErr AECreateDesc(DescType type, const void* data, Size dataSize, AEDesc* result);
CF_EXPORT OSErr AEDisposeDesc(AEDesc* desc);
CF_EXPORT OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                                   AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);
CF_EXPORT OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data, Size dataSize);
CF_EXPORT OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc);
CF_EXPORT OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                                   Boolean disposeInputs, AEDesc* objSpecifier);
CF_EXPORT OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority priority,
                       SInt32 timeOutInTicks, AEIdleUPP idleProc, AEFilterUPP filterProc);

// Dialogs.h, MacMemory.h, Multiprocessing.h

#if !__LP64__
typedef SInt16 DialogItemIndex;
typedef Boolean (*ModalFilterUPP)(struct OpaqueDialogPtr* dialog, struct EventRecord* event, DialogItemIndex* itemHit);
CF_EXPORT DialogItemIndex StopAlert(SInt16 alertID, ModalFilterUPP modalFilter);
#endif

CF_EXPORT Ptr NewPtr(Size byteCount) CV_DEPRECATED(10.0, 10.8);
CF_EXPORT void DisposePtr(Ptr p) CV_DEPRECATED(10.0, 10.8);

CF_EXPORT ItemCount MPProcessors(void) CV_DEPRECATED(10.0, 10.7);

// Processes.h

struct ProcessInfoRec {
    UInt32 processInfoLength;
    StringPtr processName;
    ProcessSerialNumber processNumber;
    UInt32 processType;
    OSType processSignature;
    UInt32 processMode;
    Ptr processLocation;
    UInt32 processSize;
    UInt32 processFreeMem;
    ProcessSerialNumber processLauncher;
    UInt32 processLaunchDate;
    UInt32 processActiveTime;
#if __LP64__
    FSRef* processAppRef;
#else
    FSSpecPtr processAppSpec;
#endif
};
typedef struct ProcessInfoRec ProcessInfoRec;
enum { kCurrentProcess = 2 };
CF_EXPORT OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info) CV_DEPRECATED(10.0, 10.9);

#pragma pack(pop)
}
