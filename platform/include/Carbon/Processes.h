#pragma once

#include <Carbon/Files.h>
#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

typedef struct {
    UInt32 highLongOfPSN;
    UInt32 lowLongOfPSN;
} ProcessSerialNumber;

enum { kCurrentProcess = 2 };

/// What the Process Manager tells of a process. The caller sets processInfoLength to the record's size and processName
/// to a buffer of 256 bytes or null; the other fields that a Mac fills are zero here.
typedef struct {
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
    FSRef* processAppRef;
} ProcessInfoRec;

/// Fills `info` for the current process, {0, kCurrentProcess}: its name is the name that its program file was started
/// by, in UTF-8, as a length byte and at most 255 bytes (cut between characters); no bytes when that is no UTF-8.
/// Errors: procNotFound (another process), paramErr (null, or another record size), memFullErr.
CF_EXPORT OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info);

CF_EXTERN_C_END
