#pragma once

#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef FourCharCode DescType;
typedef FourCharCode AEKeyword;
typedef FourCharCode AEEventClass;
typedef FourCharCode AEEventID;
typedef SInt16 AEReturnID;
typedef SInt32 AETransactionID;
typedef SInt32 AESendMode;
typedef SInt16 AESendPriority;
typedef struct OpaqueAEDataStorage* AEDataStorage;

/// A piece of data with its type, or an event. Owned by whoever made it, until AEDisposeDesc.
typedef struct AEDesc {
    DescType descriptorType;   ///< how the data is to be read; typeNull: there is none
    AEDataStorage dataHandle;  ///< the data, opaque
} AEDesc;
typedef AEDesc AEAddressDesc;
typedef AEDesc AppleEvent;

typedef struct OpaqueAEIdleUPP* AEIdleUPP;
typedef struct OpaqueAEFilterUPP* AEFilterUPP;

enum {
    typeNull = CV_FOUR_CHAR_CODE('n', 'u', 'l', 'l'),
    typeEnumerated = CV_FOUR_CHAR_CODE('e', 'n', 'u', 'm'),
    typeType = CV_FOUR_CHAR_CODE('t', 'y', 'p', 'e'),
    typeFSRef = CV_FOUR_CHAR_CODE('f', 's', 'r', 'f'),
    typeApplSignature = CV_FOUR_CHAR_CODE('s', 'i', 'g', 'n'),
    typeObjectSpecifier = CV_FOUR_CHAR_CODE('o', 'b', 'j', ' '),
    typeAppleEvent = CV_FOUR_CHAR_CODE('a', 'e', 'v', 't'),
    keyDirectObject = CV_FOUR_CHAR_CODE('-', '-', '-', '-'),
    keyAEInsertHere = CV_FOUR_CHAR_CODE('i', 'n', 's', 'h'),
    keyAEDesiredClass = CV_FOUR_CHAR_CODE('w', 'a', 'n', 't'),
    keyAEContainer = CV_FOUR_CHAR_CODE('f', 'r', 'o', 'm'),
    keyAEKeyForm = CV_FOUR_CHAR_CODE('f', 'o', 'r', 'm'),
    keyAEKeyData = CV_FOUR_CHAR_CODE('s', 'e', 'l', 'd'),
    kAECoreSuite = CV_FOUR_CHAR_CODE('c', 'o', 'r', 'e'),
    kAEMove = CV_FOUR_CHAR_CODE('m', 'o', 'v', 'e'),
    kCoreEventClass = CV_FOUR_CHAR_CODE('a', 'e', 'v', 't'),
    kAEAnswer = CV_FOUR_CHAR_CODE('a', 'n', 's', 'r'),
    cObject = CV_FOUR_CHAR_CODE('c', 'o', 'b', 'j'),
    formPropertyID = CV_FOUR_CHAR_CODE('p', 'r', 'o', 'p'),
    kTrashFolderType = CV_FOUR_CHAR_CODE('t', 'r', 's', 'h')
};

enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0 };
enum { kAENoReply = 0x00000001, kAEWaitReply = 0x00000003 };
enum { kAENormalPriority = 0 };
enum { kAEDefaultTimeout = -1, kNoTimeOut = -2 };
enum {
    errAECoercionFail = -1700,
    errAEDescNotFound = -1701,
    errAENotAppleEvent = -1707,
    errAEEventNotHandled = -1708,
    errAETimeout = -1712
};

// The calls below return paramErr for a null pointer or a negative size, and memFullErr when there is no memory. When
// one that makes a descriptor fails, `result` is the null descriptor {typeNull, null}.

/// A new descriptor with a copy of `byteCount` bytes (`data` may be null when that is 0).
CF_EXPORT OSErr AECreateDesc(DescType type, const void* data, Size byteCount, AEDesc* result);

/// Frees what a descriptor owns and makes it the null descriptor; doing it twice is harmless.
CF_EXPORT OSErr AEDisposeDesc(AEDesc* desc);

/// A new event for the application that `target` names. The two identifiers of the conversation have no effect.
CF_EXPORT OSErr AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID, const AEAddressDesc* target,
                                   AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);

/// Put a copy of bytes, or of a descriptor, into an event as the parameter `keyword`, in place of an earlier one.
/// errAENotAppleEvent when `event` was not made by AECreateAppleEvent.
CF_EXPORT OSErr AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data, Size byteCount);
CF_EXPORT OSErr AEPutParamDesc(AppleEvent* event, AEKeyword keyword, const AEDesc* desc);

/// A new object specifier: the object of class `desiredClass` in `container` that `keyData` names in the way `keyForm`
/// says. `disposeInputs` frees `container` and `keyData` as well, whatever the result.
CF_EXPORT OSErr CreateObjSpecifier(DescType desiredClass, AEDesc* container, DescType keyForm, AEDesc* keyData,
                                   Boolean disposeInputs, AEDesc* result);

/// Sends an event and waits for the reply at most `timeoutTicks` (sixtieths of a second; kAEDefaultTimeout is one
/// minute, kNoTimeOut waits as long as it takes). The one application here is the Finder ('MACS'), and the one thing it
/// does is to move an item to the Trash (class 'core', identifier 'move', a direct object of type 'fsrf', the insertion
/// location 'insh' = property 'trsh' of the null container): the user's freedesktop.org Trash, the one in HOME or that
/// of the item's volume. The item is moved whole or not at all, never copied. A reference to a symbolic link moves the
/// link.
///
/// `reply` receives the answer, to be disposed of, or after an error the null descriptor. `mode` must be kAEWaitReply;
/// `priority`, `idle` and `filter` have no effect. After errAETimeout the item may still move when what held it up
/// ends. Errors: procNotFound (another application), errAEEventNotHandled (another event), errAENotAppleEvent,
/// errAEDescNotFound (a parameter is missing), errAECoercionFail (a parameter is malformed), errAETimeout, paramErr, or
/// what kept the item from being moved: errFSBadFSRef, dirNFErr (HOME is unset or not an absolute path), wPrErr,
/// afpAccessDenied, dskFulErr, errFSUnknownCall (the item's volume can have no Trash, or the port's module for the
/// Trash cannot be loaded, which standard error says more about), ioErr.
CF_EXPORT OSErr AESend(const AppleEvent* event, AppleEvent* reply, AESendMode mode, AESendPriority priority,
                       SInt32 timeoutTicks, AEIdleUPP idle, AEFilterUPP filter);

CF_EXTERN_C_END
