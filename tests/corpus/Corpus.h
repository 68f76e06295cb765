// The files of the corpus that $OSA_CORPUS names.
//
// Its folders: bundles/ (script bundles and applets), plist/, rsrc/ (resource forks bare, in
// AppleDouble, in MacBinary, in emulators' folders), rtf/, scpt/, text/, typedstream/ (non-keyed
// archives). The totals that the tests expect are those of the corpus as it is.
#pragma once

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>

#include "tests/support/ImportFixture.h"

namespace osa::test {

class Corpus : public testing::Test {
  protected:
    void SetUp() override {
        const char* const folder = std::getenv("OSA_CORPUS");
        if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "SKIPPED: OSA_CORPUS is not set";
        root_ = folder;
        ASSERT_TRUE(fs::is_directory(root_));
    }

    /// Files and folders below `part` of the corpus.
    std::vector<fs::path> entries(const std::string& part) const {
        return {fs::recursive_directory_iterator(root_ / part), {}};
    }
    std::vector<fs::path> files(const std::string& part) const {
        std::vector<fs::path> found = entries(part);
        std::erase_if(found, [](const fs::path& path) { return !fs::is_regular_file(path); });
        return found;
    }

    fs::path root_;
};

/// A text read by eye and by another reader, told by its length and the FNV-1a of its UTF-16.
struct KnownText {
    const char* path;
    CFIndex length;
    std::uint64_t hash;
};

inline void expectText(CFStringRef text, const KnownText& known) {
    ASSERT_NE(text, nullptr);
    std::uint64_t hash = 0xCBF29CE484222325;
    for (CFIndex i = 0; i < CFStringGetLength(text); ++i) {
        const unsigned unit = CFStringGetCharacterAtIndex(text, i);
        for (const unsigned byte : {unit & 0xFF, unit >> 8}) hash = (hash ^ byte) * 0x100000001B3;
    }
    EXPECT_EQ(CFStringGetLength(text), known.length);
    EXPECT_EQ(hash, known.hash) << std::hex << hash;
}

}  // namespace osa::test
