// Catches what is written to the standard error stream while it lives.
#pragma once

#include <string>
#include <vector>

namespace osa::service {

class StderrCapture {
  public:
    /// Without effect when the system gives no file to catch into: output then goes where it always
    /// went.
    StderrCapture();
    StderrCapture(const StderrCapture&) = delete;
    StderrCapture& operator=(const StderrCapture&) = delete;
    ~StderrCapture();

    /// Ends the capture and gives the lines caught, without their newlines; at most the first 64
    /// KiB.
    std::vector<std::string> finish();

  private:
    void restore();

    int saved_ = -1;
};

}  // namespace osa::service
