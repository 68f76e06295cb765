// The loaded plug-in, and counts of what must not leak.
#pragma once

#include <OSA/Diagnostics.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "service/ImporterHost.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/Sample.h"

namespace osa::test {

/// The plug-in of this build, loaded the way a service loads it.
inline std::unique_ptr<service::ImporterHost> loadImporter() {
    std::string reason;
    auto host = service::ImporterHost::load(std::getenv("OSA_IMPORTER"), reason);
    EXPECT_NE(host, nullptr) << reason;
    return host;
}

/// Live objects, blocks, open files and descriptors of the process.
struct Resources {
    CFIndex objects = OSALiveObjectCount();
    CFIndex blocks = OSALiveBlockCount();
    CFIndex openFiles = OSAOpenFileCount();
    long descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});

    bool operator==(const Resources&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Resources& counts) {
        return out << counts.objects << " objects, " << counts.blocks << " blocks, "
                   << counts.openFiles << " open files, " << counts.descriptors << " descriptors";
    }
};

}  // namespace osa::test
