// Many threads on shared files and folders, for the thread sanitizer.
#include <atomic>

#include "platform/files/FolderTable.h"
#include "tests/platform/files/FileFixture.h"

namespace osa::test {
namespace {

class FileThreads : public FileFixture {
  protected:
    static void run(int count, const std::function<void(int)>& work) {
        std::vector<std::thread> threads;
        for (int i = 0; i < count; ++i) threads.emplace_back(work, i);
        for (std::thread& thread : threads) thread.join();
    }
};

TEST_F(FileThreads, SeeOneMomentWhileOneRenames) {
    put("x", "data");
    put("._x", appleDouble(finderInfo(1, 0), "fork"));
    std::atomic<int> wrong = 0, left = 300;
    run(3, [&](int own) {
        for (int i = own; left > 0; ++i) {
            FSRef object;
            const std::string path = at(i % 2 == 0 ? "x" : "y");
            const auto* const bytes = reinterpret_cast<const UInt8*>(path.c_str());
            if (FSPathMakeRef(bytes, &object, nullptr) != noErr) continue;
            const UniChar other = i % 2 == 0 ? 'y' : 'x';
            if (own == 0 && --left >= 0) FSRenameUnicode(&object, 1, &other, 0, nullptr);
            if (own == 0) continue;
            FSCatalogInfo found{};
            const OSErr status =
                FSGetCatalogInfo(&object, kFSCatInfoFinderInfo | kFSCatInfoRsrcSizes, &found,
                                 nullptr, nullptr, nullptr);
            const bool isWhole = found.finderInfo.fdType == 1 && found.rsrcLogicalSize == 4;
            if (status != fnfErr && (status != noErr || !isWhole)) ++wrong;
        }
    });
    EXPECT_EQ(wrong, 0);
}

TEST_F(FileThreads, AgreeOnFoldersThatComeMeanwhile) {
    std::atomic<int> wrong = 0;
    const auto work = [&](int) {
        for (int i = 0; i < 500; ++i) {
            const std::string path = "/no folder/" + std::to_string(i);
            const FolderIndex index = internRealFolder(path);
            const std::string* const known = folderPath(index);
            if (known == nullptr || *known != path || internRealFolder(path) != index) ++wrong;
        }
    };
    run(4, work);
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(folderPath(0xFFFFFFFE), nullptr);
}

}  // namespace
}  // namespace osa::test
