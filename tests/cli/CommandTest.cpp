// The program as scripts use it: output, error lines and exit statuses.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacMemory.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "tests/cli/Command.h"
#include "tests/support/ResourceLines.h"
#include "tests/support/TemporaryFolder.h"
#include "tools/samples/AppleDoubleBuilder.h"
#include "tools/samples/ResourceForkBuilder.h"
#include "tools/samples/Sample.h"

namespace osa::test {
namespace {

using samples::Json;

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

class Command : public testing::Test {
  protected:
    std::string sample(const Json& description) {
        return samples::writeSample(description, folder_.path());
    }

    TemporaryFolder folder_;
};

TEST_F(Command, ShowsEveryFileOfACallAndNamesThoseThatItCannot) {
    const std::string script =
        sample({{"name", "Script"},
                {"type", "osas"},
                {"creator", "ToyS"},
                {"resources", {{{"type", "TEXT"}, {"id", 1128}, {"text", "Text é"}}}}});
    const std::string notUTF8 = folder_.write("bad\xFFname", "");
    folder_.write("Folder/x", "");
    const std::string missing = folder_.path("missing");
    const std::string files = quoted(missing) + " " + quoted(folder_.path("Folder")) + " " +
                              quoted(notUTF8) + " " + quoted(script);
    const Outcome json = run("show --json " + files, "2>/dev/null");
    EXPECT_EQ(json.exitStatus, 1);
    std::istringstream lines(json.output);
    std::vector<Json> records;
    for (std::string line; std::getline(lines, line);) records.push_back(Json::parse(line));
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].at("error"), "no such file");
    EXPECT_FALSE(records[0].contains("kind"));
    EXPECT_EQ(records[1].at("error"), "is a folder, but no bundle");
    EXPECT_TRUE(records[2].contains("error"));
    EXPECT_EQ(records[3].at("attributes").at("kMDItemDescription"), "Text é");
    const Outcome errors = run("show --json " + files, "2>&1 >/dev/null");
    EXPECT_TRUE(errors.output.starts_with("osa: " + missing + ": no such file\n")) << errors.output;
    EXPECT_EQ(run("show " + quoted(script)).exitStatus, 0);
    const Outcome list = run("show --plist " + quoted(script));
    EXPECT_NE(list.output.find("<key>kMDItemDescription</key>"), std::string::npos) << list.output;
}

TEST_F(Command, TellsThatItsOutputIsLostAndLetsNothingSteerTheTerminal) {
    const std::string file = quoted(folder_.write("file\x1B[2J\nname", "beep"));
    for (const std::string& arguments :
         {"show " + file, "show --json " + file, "show --plist " + file}) {
        EXPECT_EQ(run(arguments, "2>/dev/null >/dev/full").exitStatus, 1) << arguments;
    }
    const Outcome shown = run("show " + file);
    EXPECT_EQ(shown.exitStatus, 0);
    EXPECT_EQ(shown.output.find('\x1B'), std::string::npos);
    EXPECT_NE(shown.output.find("file\\u001b[2J\\u000aname\n"), std::string::npos) << shown.output;
}

TEST_F(Command, RefusesWrongUsageWithStatusTwo) {
    const std::string file = quoted(folder_.write("file", ""));
    for (const std::string& arguments :
         {std::string(), std::string("show"), std::string("nonsense"),
          "show --json --plist " + file, "resources --raw " + file,
          "resources --only TOOLONG:1 " + file, "resources --only :1 " + file}) {
        EXPECT_EQ(run(arguments).exitStatus, 2) << arguments;
    }
    EXPECT_EQ(run("--help").exitStatus, 0);
    EXPECT_EQ(run("show --importer " + file + " " + file).exitStatus, 1) << "a file is no plug-in";
}

TEST_F(Command, ExtractsTheSameBytesFromEveryContainer) {
    std::string bytes;
    for (int i = 0; i < 256; ++i) bytes += static_cast<char>(i);
    const std::string fork = samples::ResourceForkBuilder()
                                 .add('TEXT', -7, bytes, "N\x8Ame")
                                 .add(0xA9202020, 1, "")
                                 .add('TEXT', 128, "other")
                                 .text();
    const std::string sideFile =
        samples::appleDouble(samples::finderInfoBytes('osas', 'ToyS', 0), fork);
    folder_.write("beside", "data");
    folder_.write("._beside", sideFile);
    folder_.write("flat.rsrc", fork);
    folder_.write("handed over", sideFile);
    for (const char* const name : {"beside", "._beside", "flat.rsrc", "handed over"}) {
        SCOPED_TRACE(name);
        const std::string file = quoted(folder_.path(name));
        const Outcome raw = run("resources --only TEXT:-7 --raw " + file);
        EXPECT_EQ(raw.exitStatus, 0);
        EXPECT_EQ(raw.output, bytes);
        const Outcome list = run("resources " + file);
        EXPECT_NE(list.output.find("'TEXT'     -7        256 bytes  \"N\xC3\xA4me\""),
                  std::string::npos)
            << list.output;
        EXPECT_NE(list.output.find("'\xC2\xA9   '      1          0 bytes"), std::string::npos);
        EXPECT_EQ(run("resources --only '\xC2\xA9:1' --raw " + file).output, "");
        EXPECT_EQ(run("resources --only TEXT --raw " + file).exitStatus, 1) << "two are meant";
        EXPECT_EQ(run("resources --only none:1 --raw " + file).exitStatus, 1);
    }
    const Outcome plain = run("resources " + quoted(folder_.write("plain", "text")) + " " +
                              quoted(folder_.path("flat.rsrc")));
    EXPECT_EQ(plain.exitStatus, 1);
    EXPECT_NE(plain.output.find("plain: has no resources\n"), std::string::npos) << plain.output;
    EXPECT_NE(plain.output.find("'TEXT'    128"), std::string::npos)
        << "the other file is still listed";
}

TEST_F(Command, TellsWhereForksAndFinderInformationAre) {
    folder_.write("File", "data");
    folder_.write("._File", samples::appleDouble(
                                samples::finderInfoBytes('osas', 'Toy\x8E', 0x4004), "a fork"));
    folder_.write("Box.app/Contents/PkgInfo", "APPLaplt");
    const Outcome shown =
        run("info --json " + quoted(folder_.path("File")) + " " + quoted(folder_.path("Box.app")));
    EXPECT_EQ(shown.exitStatus, 0) << shown.output;
    const std::size_t end = shown.output.find('\n');
    const Json file = Json::parse(shown.output.substr(0, end));
    EXPECT_EQ(file["creator"], "Toy\xC3\xA9");
    EXPECT_EQ(file["flags"], Json::array({"invisible"}));
    EXPECT_EQ(file["label"], 2);
    EXPECT_EQ(file["dataForkSize"], 4);
    EXPECT_EQ(file["resourceForkSize"], 6);
    for (const char* const places : {"finderInfoIn", "resourceForkIn", "appleDouble"}) {
        EXPECT_EQ(file[places][0]["Path"], folder_.path("._File")) << places;
    }
    const Json package = Json::parse(shown.output.substr(end));
    EXPECT_EQ(package["kind"], "package");
    EXPECT_EQ(package["type"], "APPL");
    const Outcome text =
        run("info " + quoted(folder_.path("none")) + " " + quoted(folder_.path("File")));
    EXPECT_EQ(text.exitStatus, 1);
    EXPECT_NE(text.output.find("/none: no such file\n"), std::string::npos);
    EXPECT_NE(text.output.find("    resource fork    = 6 bytes\n"), std::string::npos)
        << text.output;
}

TEST_F(Command, ChangesResourcesInTheOrderGivenAllOrNone) {
    const std::string fork = samples::ResourceForkBuilder()
                                 .add('TEXT', 1, "old", "name", 0x28)
                                 .add('TEXT', 2, "two", nullptr, 0x08)
                                 .text();
    folder_.write("data", "new data");
    const Lines before = {"TEXT 1 40 'name' old", "TEXT 2 8 two"};
    const struct {
        const char* arguments;
        std::string message;
        Lines after;
        int exitStatus = 1;
    } rows[] = {
        {"--set TEXT:1=data --delete TEXT:2", "", {"TEXT 1 40 'name' new data"}, 0},
        {"--delete TEXT:1 --set 'a=\xC2\xA9:-1=data' --rename 'a=\xC2\xA9:-1=\xC3\xBC=' "
         "--delete TEXT:2",
         "",
         {"a=\xA9  -1 0 '\x9F=' new data"},
         0},
        {"--set TEXT:1=data --delete TEXT:3", "FILE: has no resource 'TEXT' 3", before},
        {"--delete TEXT:1 --rename TEXT:1=x", "FILE: has no resource 'TEXT' 1", before},
        {"--delete TEXT:1 --set TEXT:1=none", "none: cannot be read", before},
        {"--set TEXT:1=.", ".: cannot be read", before},
        {"--delete TEXT", "TEXT: is not TYPE:ID", before, 2},
        {"--rename TEXT:1=\xE6\x97\xA5",
         "TEXT:1=\xE6\x97\xA5: the name is empty, over 255 characters, or has characters that Mac "
         "Roman lacks",
         before, 2},
    };
    const auto edit = [&](const std::string& arguments) {
        return run("resources " + arguments, "2>&1", "cd " + quoted(folder_.path()) + " && ");
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        for (const std::string name : {"beside", "flat.rsrc"}) {
            folder_.write("beside", "data");
            folder_.write("._beside", samples::wrappedFork(fork));
            folder_.write("flat.rsrc", fork);
            const Outcome changed = edit(row.arguments + (" " + name));
            std::string message = row.message.empty() ? "" : "osa: " + row.message + "\n";
            if (message.starts_with("osa: FILE")) message.replace(5, 4, name);
            EXPECT_EQ(changed.exitStatus, row.exitStatus);
            EXPECT_EQ(changed.output, message);
            EXPECT_EQ(resourceLines(folder_.path(name)), row.after);
        }
    }
    folder_.write("plain", "text");
    folder_.write("wrapped", samples::wrappedFork(fork));
    EXPECT_EQ(edit("--set T:1=data --delete T:2 plain").exitStatus, 1);
    EXPECT_FALSE(fs::exists(folder_.path("._plain"))) << "no fork was made for it";
    EXPECT_EQ(edit("--set T:1=data wrapped").exitStatus, 1) << "a container";
    EXPECT_EQ(edit("--set T:1=data plain").exitStatus, 0);
    EXPECT_EQ(resourceLines(folder_.path("plain")), (Lines{"T    1 0 new data"}));
}

TEST_F(Command, DescribesFlattenedDescriptors) {
    const std::string bytes("AEfd\0\1\0\0TEXT\0\0\0\2\x8E\n", 18);
    const std::string file = folder_.write("text", bytes);
    const std::string cut = folder_.write("cut", bytes.substr(0, 17));
    EXPECT_EQ(run("describe " + quoted(file)).output, "\"\xC3\xA9\\n\"\n");
    folder_.write("Folder/x", "");
    const Outcome several =
        run("describe " + quoted(cut) + " " + quoted(folder_.path("Folder")) + " " + quoted(file));
    EXPECT_EQ(several.exitStatus, 1);
    EXPECT_EQ(several.output, "osa: " + cut + ": is no flattened descriptor, or a damaged one\n" +
                                  "osa: " + folder_.path("Folder") + ": is a folder\n" + file +
                                  ":\n\"\xC3\xA9\\n\"\n");
}

TEST_F(Command, ExplainsAliasesAndWhereTheyLead) {
    const std::string target = folder_.write("deep/target", "");
    const FSRef ref = refOf(target);
    AliasHandle record = nullptr;
    ASSERT_EQ(FSNewAlias(nullptr, &ref, &record), noErr);
    const auto handle = reinterpret_cast<Handle>(record);
    const std::string bytes(*handle, static_cast<std::size_t>(GetHandleSize(handle)));
    DisposeHandle(handle);
    folder_.write("raw", bytes);
    folder_.write("alias", "");
    folder_.write("._alias", samples::appleDouble(
                                 samples::finderInfoBytes('alis', 'MACS', 0x8000),
                                 samples::ResourceForkBuilder().add('alis', 0, bytes).text()));
    fs::create_symlink("deep/target", folder_.path("link"));
    const auto lead = [&](const char* name) {
        const Outcome outcome = run("alias --json " + quoted(folder_.path(name)), "2>/dev/null");
        const Json json = Json::parse(outcome.output);
        EXPECT_EQ(outcome.exitStatus == 0, json.at("status") == 0);
        EXPECT_EQ(json.value("recordedPath", "").ends_with("deep/target"), true);
        return json.at("kind").get<std::string>() + ": " + json.value("foundBy", "nowhere");
    };
    EXPECT_EQ(lead("raw"), "alias record: path");
    EXPECT_EQ(lead("alias"), "alias file: path");
    EXPECT_EQ(lead("link"), "symbolic link: link");
    fs::rename(target, folder_.path("deep/renamed"));
    EXPECT_EQ(lead("raw"), "alias record: number");
    EXPECT_EQ(lead("link"), "symbolic link: nowhere");
    fs::rename(folder_.path("deep/renamed"), folder_.path("moved"));
    EXPECT_EQ(lead("alias"), "alias file: search");
    const Outcome text = run("alias " + quoted(folder_.path("alias")));
    EXPECT_NE(text.output.find("    target           target\n"), std::string::npos) << text.output;
    EXPECT_NE(text.output.find("/moved\n"), std::string::npos) << text.output;
    fs::remove(folder_.path("moved"));
    EXPECT_EQ(lead("alias"), "alias file: nowhere");
    EXPECT_NE(run("alias " + quoted(folder_.write("plain", "x"))).output.find("is no alias"),
              std::string::npos);
}

}  // namespace
}  // namespace osa::test
