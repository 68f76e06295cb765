// Redirection of descriptor 2 into a file in memory.
#include "service/StderrCapture.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <sstream>
#include <utility>

namespace osa::service {
namespace {

constexpr std::size_t kMaxCaught = 64 * 1024;

/// One file for the whole process, rewound for each capture: making one a call would cost more than
/// reading the file that it is about.
int captureFile() {
    static const int file = memfd_create("osa-log", MFD_CLOEXEC);
    return file;
}

}  // namespace

StderrCapture::StderrCapture() {
    const int file = captureFile();
    // A capture that was not finished may have left something behind.
    if (file < 0 || ftruncate(file, 0) != 0 || lseek(file, 0, SEEK_SET) != 0) return;
    std::fflush(stderr);
    const int saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    if (saved < 0) return;
    if (dup2(file, STDERR_FILENO) < 0) {
        close(saved);
        return;
    }
    saved_ = saved;
}

StderrCapture::~StderrCapture() {
    restore();
}

void StderrCapture::restore() {
    if (saved_ < 0) return;
    std::fflush(stderr);
    const int saved = std::exchange(saved_, -1);
    dup2(saved, STDERR_FILENO);
    close(saved);
}

std::vector<std::string> StderrCapture::finish() {
    if (saved_ < 0) return {};
    restore();
    const int file = captureFile();
    if (lseek(file, 0, SEEK_CUR) == 0) return {};
    std::string text(kMaxCaught, '\0');
    const ssize_t count = pread(file, text.data(), text.size(), 0);
    text.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    return lines;
}

}  // namespace osa::service
