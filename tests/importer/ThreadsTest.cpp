// Eight threads importing different files give what one gives.
#include "cli/RecordFormat.h"
#include "tests/support/ImportFixture.h"

namespace osa::test {
namespace {

std::string importedJson(const service::ImporterHost& host, const std::string& path) {
    service::ImportRecord record;
    record.path = path;
    const auto attributes = service::ImporterHost::makeAttributes();
    record.imported = host.callImporter(path, attributes.get());
    record.attributes = CFRef<CFDictionaryRef>::Retain(attributes.get());
    return cli::recordAsJson(record);
}

TEST(Threads, ImportDifferentFilesAtOnceAsOneThreadDoes) {
    constexpr int kThreads = 8;
    constexpr int kRounds = 20;
    const auto host = loadImporter();
    const TemporaryFolder folder;
    std::vector<std::vector<std::string>> items(kThreads);
    for (const fs::path& file : exampleFiles()) {
        samples::Json sample = samples::readSample(file);
        const std::string name = sample.at("name");
        for (int thread = 0; thread < kThreads; ++thread) {
            sample["name"] = std::to_string(thread) + " " + name;
            items[thread].push_back(samples::writeSample(sample, folder.path()));
        }
    }
    testing::internal::CaptureStderr();
    std::vector<std::vector<std::string>> serial(kThreads);
    std::vector<std::vector<std::string>> parallel(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        for (const std::string& item : items[thread])
            serial[thread].push_back(importedJson(*host, item));
    }
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < kRounds; ++round) {
                parallel[thread].clear();
                for (const std::string& item : items[thread]) {
                    parallel[thread].push_back(importedJson(*host, item));
                }
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(parallel, serial);
    testing::internal::GetCapturedStderr();
}

}  // namespace
}  // namespace osa::test
