// What tests and hosts may ask of the platform that no Mac interface tells: live counts and faults.
#pragma once

#include <CoreFoundation/CFBase.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Core Foundation objects that are alive in the process, constants excluded.
OSA_PLATFORM_EXPORT CFIndex OSALiveObjectCount(void);
/// Handles and pointers of the Memory Manager that are alive.
OSA_PLATFORM_EXPORT CFIndex OSALiveBlockCount(void);
/// Reference numbers in use: open forks and open resource files.
OSA_PLATFORM_EXPORT CFIndex OSAOpenFileCount(void);

/// Makes the `nth` fallible operation (system call or Memory Manager allocation, counted from 1) of
/// the calling thread fail: system calls with EIO, allocations with memFullErr. With `fromThenOn`
/// all later ones fail too. 0 switches faults off and forgets the count.
OSA_PLATFORM_EXPORT void OSAFailOperation(UInt32 nth, Boolean fromThenOn);
/// Fallible operations of the calling thread that were made to fail since OSAFailOperation was
/// called.
OSA_PLATFORM_EXPORT UInt32 OSAFailedOperations(void);

#ifdef __cplusplus
}
#endif
