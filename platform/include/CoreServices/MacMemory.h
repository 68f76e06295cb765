// Memory Manager: relocatable blocks behind handles, and fixed blocks behind pointers.
//
// Every call sets the calling thread's MemError, to noErr when it succeeded. Blocks may be used
// from any thread, one at a time.
#pragma once

#include <CoreServices/MacTypes.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Status of the thread's last Memory Manager call.
OSA_PLATFORM_EXPORT OSErr MemError(void);

/// A new block of `size` bytes, contents undefined; the caller disposes of it. Null with memFullErr
/// when there is no room or `size` is negative. A block of 0 bytes has a non-null master pointer
/// all the same.
OSA_PLATFORM_EXPORT Handle NewHandle(Size size);
/// NewHandle, filled with zeros.
OSA_PLATFORM_EXPORT Handle NewHandleClear(Size size);
/// A handle without a block: its master pointer is null until ReallocateHandle.
OSA_PLATFORM_EXPORT Handle NewEmptyHandle(void);
/// Gives `handle` a new block of `size` bytes, contents undefined; an old block is freed.
OSA_PLATFORM_EXPORT void ReallocateHandle(Handle handle, Size size);
/// Frees the block and keeps the handle, whose master pointer becomes null.
OSA_PLATFORM_EXPORT void EmptyHandle(Handle handle);
/// Frees block and handle. Null is nilHandleErr and does nothing. Not for the handle of a resource
/// that still belongs to an open resource file: that one is released with ReleaseResource.
OSA_PLATFORM_EXPORT void DisposeHandle(Handle handle);

/// Bytes in the block; 0 for an empty or null handle.
OSA_PLATFORM_EXPORT Size GetHandleSize(Handle handle);
/// Grows or shrinks the block, contents kept as far as they fit.
OSA_PLATFORM_EXPORT void SetHandleSize(Handle handle, Size size);

/// Lock marks are kept for callers that save and restore them; blocks move only when they are
/// resized.
OSA_PLATFORM_EXPORT void HLock(Handle handle);
OSA_PLATFORM_EXPORT void HUnlock(Handle handle);
/// Bits of a handle's state.
enum { kHandleLockedMask = 0x80, kHandlePurgeableMask = 0x40, kHandleResourceMask = 0x20 };
OSA_PLATFORM_EXPORT SInt8 HGetState(Handle handle);
OSA_PLATFORM_EXPORT void HSetState(Handle handle, SInt8 state);
/// Sets and clears the mark of a handle that belongs to an open resource file.
OSA_PLATFORM_EXPORT void HSetRBit(Handle handle);
OSA_PLATFORM_EXPORT void HClrRBit(Handle handle);

/// A new handle with a copy of `size` bytes; the caller disposes of it.
OSA_PLATFORM_EXPORT OSErr PtrToHand(const void* source, Handle* newHandle, Size size);
/// Replaces `*handle` by a new handle with a copy of its block.
OSA_PLATFORM_EXPORT OSErr HandToHand(Handle* handle);

/// A fixed block of `size` bytes, freed with DisposePtr; null with memFullErr.
OSA_PLATFORM_EXPORT Ptr NewPtr(Size size);
OSA_PLATFORM_EXPORT Ptr NewPtrClear(Size size);
OSA_PLATFORM_EXPORT void DisposePtr(Ptr pointer);
OSA_PLATFORM_EXPORT Size GetPtrSize(Ptr pointer);

/// Copies `size` bytes; the runs may overlap.
OSA_PLATFORM_EXPORT void BlockMoveData(const void* source, void* target, Size size);

#ifdef __cplusplus
}
#endif
