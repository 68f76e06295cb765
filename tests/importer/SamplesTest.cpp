// Every example script through the loaded plug-in: kind, result, attributes and log lines are those
// that its description expects; nothing leaks, whatever fails on the way.
#include "cli/RecordFormat.h"
#include "tests/support/ImportFixture.h"

namespace osa::test {
namespace {

using samples::Json;

TEST(Samples, AreImportedAsTheyExpect) {
    const auto host = loadImporter();
    std::set<int> kinds;
    for (const fs::path& file : exampleFiles()) {
        SCOPED_TRACE(file.filename());
        const TemporaryFolder folder;
        const Json sample = samples::readSample(file);
        ASSERT_TRUE(sample.contains("expect")) << "a sample without expectation tests nothing";
        const fs::path item = samples::writeSample(sample, folder.path());
        Json record = Json::parse(cli::recordAsJson(host->import(item)));
        EXPECT_EQ(record.at("path"), item.string());
        record.erase("path");
        EXPECT_EQ(record.dump(1), sample.at("expect").dump(1));
        kinds.insert(record.at("kind").get<int>());
    }
    EXPECT_EQ(kinds, (std::set<int>{1, 2, 3, 4, 5, 6, 7, 8, 9}));
}

TEST(Samples, LeaveNothingBehindInTenThousandCalls) {
    const auto host = loadImporter();
    const TemporaryFolder folder;
    std::vector<std::string> items;
    for (const fs::path& file : exampleFiles()) {
        items.push_back(samples::writeSample(samples::readSample(file), folder.path()));
    }
    testing::internal::CaptureStderr();
    const auto importAll = [&] {
        for (const std::string& item : items) {
            host->callImporter(item, service::ImporterHost::makeAttributes().get());
        }
    };
    importAll();  // fills the caches that stay
    const Resources before;
    for (std::size_t calls = 0; calls < 10000; calls += items.size()) importAll();
    EXPECT_EQ(Resources(), before);
    testing::internal::GetCapturedStderr();
}

TEST(Samples, AreRightOrRefusedWhenAnyOperationFailsAndLeakNothing) {
    const auto host = loadImporter();
    const TemporaryFolder folder;
    for (const fs::path& file : exampleFiles()) {
        SCOPED_TRACE(file.filename());
        const Json sample = samples::readSample(file);
        const std::string item = samples::writeSample(sample, folder.path());
        const bool expected = sample.at("expect").at("imported").get<bool>();
        for (const bool fromThenOn : {false, true}) {
            for (UInt32 nth = 1;; ++nth) {
                testing::internal::CaptureStderr();
                const Resources before;
                bool imported = false;
                const UInt32 failed = failing(nth, fromThenOn, [&] {
                    imported =
                        host->callImporter(item, service::ImporterHost::makeAttributes().get());
                });
                EXPECT_EQ(Resources(), before) << "operation " << nth;
                testing::internal::GetCapturedStderr();
                if (failed == 0) {
                    EXPECT_EQ(imported, expected);
                    break;
                }
                ASSERT_LT(nth, 500U) << "the faults never end";
            }
        }
    }
}

}  // namespace
}  // namespace osa::test
