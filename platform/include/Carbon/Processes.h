#pragma once

#include <Carbon/Files.h>
#include <CoreFoundation/CFBase.h>

CF_EXTERN_C_BEGIN

/// Names a process; {0, kCurrentProcess} is the one that asks.
typedef struct ProcessSerialNumber {
    UInt32 highLongOfPSN;  ///< upper half of the number
    UInt32 lowLongOfPSN;   ///< lower half
} ProcessSerialNumber;

enum { kCurrentProcess = 2 };

/// What the Process Manager knows about a process. The caller sets processInfoLength to the record's size and
/// processName to a buffer of 256 bytes or null; the other fields that a Mac fills are zero here.
typedef struct ProcessInfoRec {
    /// Set by the caller, as said above.
    UInt32 processInfoLength;
    StringPtr processName;

    /// The number that was asked with.
    ProcessSerialNumber processNumber;

    /// Zero here.
    UInt32 processType;
    OSType processSignature;
    UInt32 processMode;
    Ptr processLocation;
    UInt32 processSize;
    UInt32 processFreeMem;
    ProcessSerialNumber processLauncher;
    UInt32 processLaunchDate;
    UInt32 processActiveTime;

    /// Not looked at.
    FSRef* processAppRef;
} ProcessInfoRec;

/// Fills `info` for the current process, {0, kCurrentProcess}: its name is the name that its program file was started
/// by, in UTF-8, as a length byte and at most 255 bytes (cut between characters); no bytes when that is not UTF-8.
/// Errors: procNotFound (another process), paramErr (null, or another record size), memFullErr.
CF_EXPORT OSErr GetProcessInformation(const ProcessSerialNumber* psn, ProcessInfoRec* info);

CF_EXTERN_C_END
