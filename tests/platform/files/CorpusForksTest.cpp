// Side files of the corpus that $OSA_CORPUS names: what is written into them changes nothing else.
#include "platform/files/stores/FinderInfoWriter.h"
#include "platform/files/stores/ResourceForkWriter.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class CorpusForks : public FileFixture {
  protected:
    static OSStatus write(const FSRef& file, const std::string& fork) {
        return writeResourceFork(file, std::make_shared<MemorySource>(asBytes(fork))).status();
    }
    void check(const std::string& original) const {
        put("x", "data");
        put("._x", original);
        const FSRef x = ref("x");
        const std::string old = fork(x, ForkKind::resource);
        const bool hasFork = !old.starts_with("status");
        if (hasFork) {
            EXPECT_EQ(write(x, old), noErr);
            EXPECT_TRUE(content("._x") == original) << "the same fork again";
        }
        for (const std::string& other : {std::string("new"), std::string(100000, 'x')}) {
            EXPECT_EQ(write(x, other), noErr);
            EXPECT_TRUE(fork(x, ForkKind::resource) == other);
            EXPECT_TRUE(besidesFork(content("._x")) == besidesFork(original));
        }
        EXPECT_EQ(write(x, hasFork ? old : ""), noErr);
        EXPECT_TRUE(!hasFork || old.empty() || content("._x") == original) << "the old fork back";
        constexpr FSCatalogInfoBitmap kInfo = kFSCatInfoFinderInfo | kFSCatInfoFinderXInfo;
        const FSCatalogInfo known = info(x, kInfo);
        FSCatalogInfo other = known;
        other.finderInfo.fdType ^= 1;
        EXPECT_EQ(writeFinderInfo(&x, &other.finderInfo, &other.extFinderInfo).status(), noErr);
        EXPECT_EQ(+info(x, kInfo).finderInfo.fdType, other.finderInfo.fdType);
        EXPECT_EQ(writeFinderInfo(&x, &known.finderInfo, &known.extFinderInfo).status(), noErr);
        EXPECT_TRUE(fork(x, ForkKind::resource) == (hasFork ? old : "")) << "untouched";
    }
};

TEST_F(CorpusForks, ChangeNothingElseInSideFiles) {
    const char* const corpus = std::getenv("OSA_CORPUS");
    if (corpus == nullptr || *corpus == '\0') GTEST_SKIP() << "SKIPPED: OSA_CORPUS is not set";
    unsigned count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file()) continue;
        const std::string text = contentOf(entry.path());
        if (!text.starts_with(std::string("\0\5\x16\7", 4))) continue;
        SCOPED_TRACE(entry.path());
        ++count;
        check(text);
    }
    EXPECT_EQ(count, 81u);
}

}  // namespace
}  // namespace osa::test
