#pragma once

#include <CoreFoundation/CFUUID.h>

CF_EXTERN_C_BEGIN

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK (static_cast<HRESULT>(0x00000000))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80000004))

/// The head of every interface table; the reserved pointer keeps the layout of the Component Object Model.
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
