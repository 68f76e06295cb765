// The extension routines that copy forks.
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>

#include "fsextensions/FSExtensions.h"

namespace {
constexpr UInt32 kLargestBuffer = 32768;
constexpr UInt32 kSmallestBuffer = 512;
}  // namespace

void* GetTempBuffer(UInt32 wanted, UInt32* actual) {
    UInt32 size = std::min(wanted, kLargestBuffer);
    Ptr buffer = NewPtr(static_cast<Size>(size));
    while (buffer == nullptr && size / 2 >= kSmallestBuffer) {
        size /= 2;
        buffer = NewPtr(static_cast<Size>(size));
    }
    if (actual != nullptr) *actual = buffer == nullptr ? 0 : size;
    return buffer;
}

OSStatus FSCopyFork(SInt16 source, SInt16 target, void* buffer, UInt32 bufferSize) {
    if (buffer == nullptr || bufferSize == 0) return paramErr;
    SInt64 copied = 0;
    OSStatus status = noErr;
    while (status == noErr) {
        UInt32 count = 0;
        status = FSReadFork(source, fsFromStart, copied, bufferSize, buffer, &count);
        if (status != noErr && status != eofErr) return status;
        if (count == 0) break;
        const OSStatus written = FSWriteFork(target, fsFromStart, copied, count, buffer, nullptr);
        if (written != noErr) return written;
        copied += count;
    }
    // Last, so that a target of the same size is never short in between.
    return FSSetForkSize(target, fsFromStart, copied);
}
