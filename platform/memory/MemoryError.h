// The calling thread's MemError and the count of live blocks, shared by handles and pointers.
#pragma once

#include <CoreServices/MacTypes.h>

namespace osa {

/// Stores `status` as the thread's MemError and returns it.
OSErr setMemoryError(OSErr status);

/// Allocates, or returns null with memFullErr set: when `size` is negative, when the system
/// refuses, or when a fault is due. Free with releaseBlock.
void* allocateBlock(Size size);
void releaseBlock(void* block);

void countBlock(int change);

}  // namespace osa
