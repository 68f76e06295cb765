// What nearly every test begins with: the framework, statuses, files by path, and what must not
// leak.
#pragma once

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacErrors.h>
#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace osa::test {

namespace fs = std::filesystem;

inline FSRef refOf(const std::string& path) {
    FSRef ref{};
    const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
    EXPECT_EQ(FSPathMakeRef(bytes, &ref, nullptr), noErr) << path;
    return ref;
}

/// "status -43" when the reference leads nowhere.
inline std::string pathOf(const FSRef& ref) {
    UInt8 path[5000];
    const OSStatus status = FSRefMakePath(&ref, path, sizeof path);
    return status == noErr ? reinterpret_cast<char*>(path) : "status " + std::to_string(status);
}

inline CFRef<CFURLRef> urlOf(const std::string& path, bool isFolder = false) {
    return CFRef<CFURLRef>::Adopt(CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()),
        isFolder));
}

inline CFRef<CFDataRef> dataOf(std::string_view bytes) {
    return CFRef<CFDataRef>::Adopt(CFDataCreate(
        nullptr, reinterpret_cast<const UInt8*>(bytes.data()), static_cast<CFIndex>(bytes.size())));
}

inline std::string bytesOf(CFDataRef data) {
    return {reinterpret_cast<const char*>(CFDataGetBytePtr(data)),
            static_cast<std::size_t>(CFDataGetLength(data))};
}

/// Nothing when the file cannot be read.
inline std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Waits for what other threads and processes do.
template <typename Condition>
bool comesTrue(Condition condition) {
    for (int left = 1000; left > 0 && !condition(); --left)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return condition();
}

/// How many operations failed while `work` ran, the nth or all from the nth on made to fail.
template <typename Work>
UInt32 failing(UInt32 nth, bool fromThenOn, Work work) {
    OSAFailOperation(nth, fromThenOn);
    work();
    const UInt32 failed = OSAFailedOperations();
    OSAFailOperation(0, false);
    return failed;
}

/// Live objects, blocks, open files and descriptors of the process.
struct Resources {
    CFIndex objects = OSALiveObjectCount();
    CFIndex blocks = OSALiveBlockCount();
    CFIndex openFiles = OSAOpenFileCount();
    long descriptors = std::distance(fs::directory_iterator("/proc/self/fd"), {});

    bool operator==(const Resources&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Resources& counts) {
        return out << counts.objects << " objects, " << counts.blocks << " blocks, "
                   << counts.openFiles << " open files, " << counts.descriptors << " descriptors";
    }
};

/// Lets the test fail when it goes and anything is left over.
class NoLeaks {
  public:
    NoLeaks() : before_() {}
    NoLeaks(const NoLeaks&) = delete;
    NoLeaks& operator=(const NoLeaks&) = delete;
    ~NoLeaks() { EXPECT_EQ(Resources(), before_); }

  private:
    const Resources before_;
};

}  // namespace osa::test
