// The loaded plug-in.
#pragma once

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

/// The descriptions of the example scripts.
inline std::vector<fs::path> exampleFiles() {
    std::vector<fs::path> files;
    for (const auto& entry :
         fs::directory_iterator(fs::path(std::getenv("OSA_SOURCE_DIR")) / "examples")) {
        if (entry.path().extension() == ".json") files.push_back(entry.path());
    }
    return files;
}

}  // namespace osa::test
