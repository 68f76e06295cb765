// Every file and folder of the corpus through the plug-in.
#include "cli/RecordFormat.h"
#include "tests/corpus/Corpus.h"

namespace osa::test {
namespace {

using Import = Corpus;

TEST_F(Import, TakesWhateverItIsGivenAndLeavesNothingBehind) {
    const auto host = loadImporter();
    const std::vector<fs::path> items = entries("");
    std::map<std::string, int> outcomes;
    std::vector<std::string> records;
    for (const fs::path& item : items) {
        SCOPED_TRACE(item);
        const service::ImportRecord record = host->import(item);
        records.push_back(cli::recordAsJson(record));
        EXPECT_EQ(samples::Json::parse(records.back()).at("path"), item.string());
        std::string outcome = record.kind ? service::kindName(*record.kind) : record.error;
        if (record.imported) outcome += ", imported";
        if (!record.log.empty()) outcome += ", logs";
        ++outcomes[outcome];
    }
    // Scripts that log were saved without a resource fork.
    const std::map<std::string, int> expected = {
        {"is a folder, but no bundle", 369},        {"kScriptTypeText", 709},
        {"kScriptTypeDataForkScript, logs", 206},   {"kScriptTypeResourceScript, imported", 8},
        {"kScriptTypeBundleScript, imported", 10},  {"kScriptTypeBundleApplet, imported", 40},
        {"kScriptTypeClassicApplet, imported", 24}, {"kScriptTypeUnknown", 67}};
    EXPECT_EQ(outcomes, expected);

    const Resources before;
    for (std::size_t i = 0; i < items.size(); ++i)
        EXPECT_EQ(cli::recordAsJson(host->import(items[i])), records[i]) << "the second time";
    EXPECT_EQ(Resources(), before);
}

/// Those of them that say anything; made by scripts' editors in Latin and Japanese systems.
const KnownText kDescriptions[] = {
    {"ajcates+Color-Picker.app/Color-Picker.app", 32, 0xF3ECC97CE986FCF3},
    {"tkurita+XAccessor.scptd/XAccessor.scptd", 63, 0x39A4B3C013DC3FFF},
    {"uhshu+Resource-Pack-Decoder/Resource-Pack-Decoder.scptd", 9, 0x0942B371956DA523},
};

TEST_F(Import, GivesEveryBundleWithADocumentItsDescription) {
    const auto host = loadImporter();
    int bundles = 0;
    for (const fs::path& item : entries("bundles")) {
        const fs::path resources = item / "Contents/Resources";
        if (!fs::exists(resources / "description.rtfd/TXT.rtf") ||
            !fs::exists(resources / "Scripts/main.scpt"))
            continue;
        SCOPED_TRACE(item);
        ++bundles;
        const service::ImportRecord record = host->import(item);
        EXPECT_TRUE(record.imported);
        const auto text = static_cast<CFStringRef>(
            CFDictionaryGetValue(record.attributes.get(), kMDItemDescription));
        const auto* const known = std::ranges::find_if(kDescriptions, [&](const KnownText& each) {
            return item == root_ / "bundles" / each.path;
        });
        // What most editors keep of a description that nobody wrote.
        const KnownText empty{"", 0, 0xCBF29CE484222325};
        expectText(text, known == std::end(kDescriptions) ? empty : *known);
    }
    EXPECT_EQ(bundles, 25);
}

}  // namespace
}  // namespace osa::test
