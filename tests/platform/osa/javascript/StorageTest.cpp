// The stored form: round trips, damage, and the compiled files of the corpus.
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/platform/osa/javascript/Scripting.h"

namespace osa::test {
namespace {

class Storage : public Scripting {
  protected:
    std::string stored(OSAID script, SInt32 mode) {
        Desc data;
        const OSAError status = OSAStore(js, script, typeOSAGenericStorage, mode, data.out());
        return status == noErr ? data.bytes() : failed(status);
    }
    /// The script, or 0 and the status in `status`.
    OSAID load(const std::string& bytes, OSAError* status) {
        OSAID script = kOSANullScript;
        *status = OSALoad(js, Desc(typeOSAGenericStorage, bytes), kOSAModeNull, &script);
        return script;
    }
};

TEST_F(Storage, RoundTripsWithAndWithoutSource) {
    const char source[] = "// note €\nfunction secret() { return 'réponse'; }\nsecret()";
    const OSAID script = compiled(source);
    const std::string open = stored(script, kOSAModeNull);
    EXPECT_EQ(open.substr(0, 24), "JsOsaDAS1.001.00bplist00");
    EXPECT_EQ(open.size() % 2, 0U);
    EXPECT_EQ(open.substr(open.size() - 12, 6), std::string("jscr\0\1", 6));
    OSAError status = noErr;
    OSAID back = load(open, &status);
    ASSERT_EQ(status, noErr);
    EXPECT_EQ(sourceOf(back), source);
    EXPECT_EQ(run(back), "\"réponse\"");
    EXPECT_EQ(stored(back, kOSAModeNull), open);

    const std::string closed = stored(script, kOSAModePreventGetSource);
    EXPECT_EQ(closed.find(std::string("\0s\0e\0c", 6)), std::string::npos);
    back = load(closed, &status);
    EXPECT_EQ(sourceOf(back), "E-1756");
    EXPECT_EQ(info(back, kOSACanGetSource), 0);
    EXPECT_EQ(run(back), "\"réponse\"");
    EXPECT_EQ(stored(back, kOSAModeNull), closed) << "run-only stays run-only";
    EXPECT_EQ(run("1"), "1");
    OSAID handler = kOSANullScript;
    ASSERT_EQ(OSAGetHandler(js, kOSAModeNull, back, text("secret"), &handler), noErr);
    EXPECT_EQ(sourceOf(handler), "E-1756");
    EXPECT_EQ(shown(handler), "function secret() {\n    [native code]\n}");
}

TEST_F(Storage, DamageIsRefused) {
    const std::string good = stored(compiled("1"), kOSAModeNull);
    std::string other = good, header = good;
    other.replace(good.size() - 12, 4, "ascr");
    header[3] = 'x';
    struct Row {
        const char* what;
        std::string bytes;
        OSAError status;
    } const rows[] = {
        {"nothing", "", errOSABadStorageType},
        {"no trailer", good.substr(0, good.size() - 1), errOSABadStorageType},
        {"another language", other, errOSABadStorageType},
        {"header", header, errOSACorruptData},
        {"list cut", good.substr(0, 30) + good.substr(good.size() - 12), errOSACorruptData},
        {"trailer alone", good.substr(good.size() - 12), errOSACorruptData},
    };
    for (const Row& row : rows) {
        OSAError status = noErr;
        EXPECT_EQ(load(row.bytes, &status), OSAID{kOSANullScript}) << row.what;
        EXPECT_EQ(status, row.status) << row.what;
    }
    EXPECT_EQ(stored(valueOf("1"), kOSAModeNull), "E-1751");
}

TEST_F(Storage, CorpusFilesGiveTheirSource) {
    const char* const corpus = std::getenv("OSA_CORPUS");
    if (corpus == nullptr || *corpus == '\0') GTEST_SKIP() << "SKIPPED: OSA_CORPUS is not set";
    int loaded = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(corpus)) {
        if (!entry.is_regular_file()) continue;
        std::ifstream in(entry.path(), std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        if (!bytes.starts_with("JsOsaDAS")) continue;
        OSAError status = noErr;
        const OSAID script = load(bytes, &status);
        EXPECT_EQ(status, noErr) << entry.path() << errorText();
        EXPECT_GT(sourceOf(script).size(), 8U) << entry.path();
        ++loaded;
    }
    EXPECT_GT(loaded, 0);
}

}  // namespace
}  // namespace osa::test
