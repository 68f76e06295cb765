// Keeps signals away for a while.
#pragma once

#include <signal.h>

namespace osa::posix {

/// While it lives no signal is handled on the thread that made it, nor ever on the threads and
/// processes that are made meanwhile; writing to a connection whose other end is gone does not end
/// these.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;
    ~SignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_;
};

}  // namespace osa::posix
