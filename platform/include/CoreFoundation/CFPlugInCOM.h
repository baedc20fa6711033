#pragma once

// As on a Mac, CoreFoundation.h leaves this header to those who need it.

#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

typedef SInt32 HRESULT;      ///< S_OK, or an error, which is negative
typedef UInt32 ULONG;        ///< a count of references
typedef void* LPVOID;        ///< an interface: a pointer to a pointer to its table
typedef CFUUIDBytes REFIID;  ///< the identifier of an interface

/// Success.
#define S_OK (static_cast<HRESULT>(0x00000000))

/// The object does not have the interface.
#define E_NOINTERFACE (static_cast<HRESULT>(0x80000004))

/// The head of every interface table; the reserved pointer keeps the layout of the Component Object Model.
/// QueryInterface sets `*out` to the interface `iid` with one reference more, or to null; AddRef and Release return the
/// new number of references.
#define IUNKNOWN_C_GUTS                                             \
    void* _reserved;                                                \
    HRESULT (*QueryInterface)(void* self, REFIID iid, LPVOID* out); \
    ULONG (*AddRef)(void* self);                                    \
    ULONG (*Release)(void* self)

/// The IUnknown interface, 00000000-0000-0000-C000-000000000046.
#define IUnknownUUID                                                                                                \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, \
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

CF_EXTERN_C_END
