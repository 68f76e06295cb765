// The object model of plug-ins: interface tables that begin with the three functions of IUnknown.
#pragma once

#include <CoreFoundation/CFUUID.h>

/// Signed 32-bit result; negative values are failures.
typedef SInt32 HRESULT;
typedef UInt32 ULONG;
typedef void* LPVOID;
/// Interface identifiers are passed by value, as their 16 bytes.
typedef CFUUIDBytes REFIID;

// clang-format off
#define S_OK          ((HRESULT)0x00000000)
#define S_FALSE       ((HRESULT)0x00000001)
#define E_NOINTERFACE ((HRESULT)0x80000004)

#define IUnknownUUID CFUUIDGetConstantUUIDWithBytes(kCFAllocatorDefault, \
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46)

/// First slots of every interface table. QueryInterface adds a reference to what it hands out.
#define IUNKNOWN_C_GUTS                                                      \
    void* _reserved;                                                         \
    HRESULT (*QueryInterface)(void* thisPointer, REFIID iid, LPVOID* ppv);   \
    ULONG (*AddRef)(void* thisPointer);                                      \
    ULONG (*Release)(void* thisPointer)
// clang-format on

typedef struct IUnknownVTbl {
    IUNKNOWN_C_GUTS;
} IUnknownVTbl;
