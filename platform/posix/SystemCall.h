// How this room makes a system call: one fault point, repeated when a signal interrupts it.
#pragma once

#include <cerrno>

#include "platform/base/FaultPoint.h"
#include "platform/base/Result.h"
#include "platform/posix/ErrnoStatus.h"

namespace osa::posix {

/// Runs `call`, which answers a negative number and sets errno when it fails.
template <typename Call>
auto systemCall(Call call) -> decltype(call()) {
    if (faultPoint()) {
        errno = EIO;
        return -1;
    }
    for (;;) {
        const auto result = call();
        if (result >= 0 || errno != EINTR) return result;
    }
}

inline Failure lastError(Intent intent = Intent::read) {
    return Failure(statusFromErrno(errno, intent));
}

}  // namespace osa::posix
