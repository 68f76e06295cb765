// The commands that compile, run and show scripts.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <tuple>

#include "tests/cli/Command.h"
#include "tests/support/TemporaryFolder.h"

namespace osa::test {
namespace {

using namespace std::string_literals;

class ScriptCommand : public testing::Test {
  protected:
    /// Exit status and output, the folder's path left out.
    std::string run(const std::string& arguments) const {
        const Outcome told = test::run("2>&1 " + arguments, "", "cd '" + folder_.path() + "' && ");
        return std::to_string(told.exitStatus) + " " + told.output;
    }

    TemporaryFolder folder_;
};

TEST_F(ScriptCommand, CompilesRunsCallsAndShows) {
    const std::string source =
        "function add(a, b) { return a + b }\n"
        "function boom() {\n  throw new Error('no') }\n"
        "function run(argv) { return argv.join('-') }\n";
    folder_.write("add.js", source);
    folder_.write("roman.js", "'\x8E'.charCodeAt(0)");
    folder_.write("lines.js", "var a;\r\rvar b = ;");
    folder_.write("foreign.scpt", "FasdUAS 1.101.10ascr\0\1\0\x0C\xFA\xDE\xDE\xAD"s);
    folder_.write("cut.scpt", "JsOsaDAS1.001.00\0"s);
    std::filesystem::create_directories(
        folder_.path("C.scptd/Contents/Resources/Scripts/main.scpt"));
    // in this order
    const std::tuple<std::string, std::string> table[] = {
        {"run add.js x -y", "0 x--y\n"},
        {"run -e '1 +' -e 2", "0 3\n"},
        {"run -e 'throw {}' z", "1 osa: -e: "},
        {"run -z", "2 "},
        {"run -z -- add.js", "2 "},
        {"run -- add.js -- -x", "0 ----x\n"},
        {"run -e 'function run(a) { return a[0] }' -- -5", "0 -5\n"},
        {"run -e 7 >/dev/full", "1 osa: standard output: cannot be written\n"},
        {"run --memory 1000 -e 7", "1 osa: -e: too little memory was allowed"},
        {"run --time 500 -e 'Array(200000).join(\"x\")' | (sleep 1.5; wc -c)", "0 200000\n"},
        {"run - you and <add.js", "0 you-and\n"},
        {"run - <roman.js", "0 233\n"},
        {R"(run -e 'console.log("", [1]); console.log("a\n")')", "0  [1]\na\n\n"},
        {"run -s s -e '[\"a\"]'", "0 [\"a\"]\n"},
        {"call -e 'function g(n) { return n + 1 }' g 4", "0 5\n"},
        {"compile -o joined.scpt -t test -e '// first' - <add.js", "0 "},
        {"source joined.scpt", "0 // first\n" + source},
        {"info joined.scpt | grep -c \"'test'\"", "0 1\n"},
        {"compile -o b.app -e 5", "2 "},
        {"compile -o . -e 5", "1 osa: .: is a folder or a device\n"},
        {"compile -x -o bare.scpt -e 'var a;' -e none", "0 "},
        {"run bare.scpt", "1 osa: bare.scpt: ReferenceError: none is not defined (line 2)\n"},
        {"call add.js add 40 2.5", "0 42.5\n"},
        {"call add.js add 4x true", "0 4xtrue\n"},
        {"call add.js none", "1 osa: add.js: has no handler 'none'\n"},
        {"call add.js boom", "1 osa: add.js: no (line 3)\n"},
        {"call add.js", "2 "},
        {"compile add.js", "0 "},
        {"source a.scpt", "0 " + source},
        {"compile -x -o bare.scpt a.scpt", "0 "},
        {"source bare.scpt", "1 osa: bare.scpt: was stored without its source\n"},
        {"call bare.scpt add 1 2", "0 3\n"},
        {"compile -r scpt:128 -o fork.scpt -e 5", "0 "},
        {"run fork.scpt", "0 5\n"},
        {"compile -o fork.scpt -e 6", "0 "},
        {"run fork.scpt", "0 6\n"},
        {"compile -r scpt -e 5", "2 "},
        {"compile -l nonsense -e 5", "1 osa: -e: there is no language 'nonsense' here\n"},
        {"compile -l javascript lines.js",
         "1 osa: lines.js: expected expression, got ';' (line 3)\n"},
        {"compile -o missing/out -e 5",
         "1 osa: missing/out: cannot be made: No such file or directory\n"},
        {"source foreign.scpt",
         "1 osa: foreign.scpt: stored in language 'ascr', which no component here reads\n"},
        {"source lines.js - <a.scpt", "0 var a;\r\rvar b = ;\n" + source},
        {"source cut.scpt", "1 osa: cut.scpt: is no script\n"},
        {"source .", "1 osa: .: is a folder, but no script\n"},
        {"compile -o B.scptd -r scpt:128 -e 5", "2 "},
        {"compile -o lines.js/B.scptd -e 5",
         "1 osa: lines.js/B.scptd: cannot be made: Not a directory\n"},
        {"compile -o B.scptd -l nonsense -e 5; ls -d B.scptd", "2 "},
        {"compile -o C.scptd -e 5; find C.scptd -type f",
         "0 osa: C.scptd/Contents/Resources/Scripts/main.scpt: is a folder or a device\n"},
        {"compile -o B.scptd/ -e 5", "0 "},
        {"show B.scptd | grep -c 'kind *= 4 '", "0 1\n"},
        {"compile -o B.scptd -x add.js", "0 "},
        {"run B.scptd a b; find B.scptd -type f ! -name '._*' | sort",
         "0 a-b\nB.scptd/Contents/Info.plist\nB.scptd/Contents/Resources/Scripts/main.scpt\n"},
        {"compile -o B.scptd a.scpt", "0 "},
        {"source B.scptd", "0 " + source},
        {"languages --json", R"(0 {"name":"JavaScript","subtype":"jscr","installed":true})"
                             "\n"},
    };
    for (const auto& [arguments, expected] : table) {
        const std::string told = run(arguments);
        const bool isWhole = expected.ends_with('\n') || expected == "0 ";
        EXPECT_EQ(isWhole ? told : told.substr(0, expected.size()), expected) << arguments;
    }
}

TEST_F(ScriptCommand, StopsWhatTakesTooMuch) {
    const char* const scripts[] = {
        "for (;;) {}",
        "var a = []; for (;;) a.push(new Array(1000).fill(1.5))",
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // take too much themselves
        "JSON.parse(\"[\".repeat(3e7))",
#endif
        "try { for (;;) {} } catch (e) { for (;;) {} }"
    };
    for (const std::string script : scripts) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(run("run --time 1000 --memory 67108864 -e '" + script + "'"),
                  "1 osa: -e: was stopped: it took too much time or memory\n");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << script;
    }
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    rusage used;
    getrusage(RUSAGE_CHILDREN, &used);
    EXPECT_LT(used.ru_maxrss, 600 << 10) << "KiB";
#endif
    EXPECT_EQ(run("run -e 'function f() { f() } f()'"), "1 osa: -e: too much recursion (line 1)\n");
}

}  // namespace
}  // namespace osa::test
