#pragma once

// CoreFoundation.h leaves this header to those who need it.

#include <CoreFoundation/CoreFoundation.h>

typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
typedef CFUUIDBytes REFIID;

#define S_OK ((HRESULT)0x00000000L)
#define E_NOINTERFACE ((HRESULT)0x80000004L)
#define STDMETHODCALLTYPE

#define IUNKNOWN_C_GUTS                                                                     \
    void* _reserved;                                                                        \
    HRESULT(STDMETHODCALLTYPE* QueryInterface)(void* thisPointer, REFIID iid, LPVOID* ppv); \
    ULONG(STDMETHODCALLTYPE* AddRef)(void* thisPointer);                                    \
    ULONG(STDMETHODCALLTYPE* Release)(void* thisPointer)

#define IUnknownUUID                                                                                                \
    CFUUIDGetConstantUUIDWithBytes(kCFAllocatorSystemDefault, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, \
                                   0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)
