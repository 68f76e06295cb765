// Reading and joining what a command compiles or runs.
#include "cli/scripts/ScriptInput.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace osa::cli {
namespace {

constexpr char kStandardInput[] = "-";
/// No script is longer.
constexpr std::size_t kLongestInput = std::size_t{64} << 20;

void appendLines(std::string& text, const std::string& more) {
    if (!text.empty() && text.back() != '\n') text += '\n';
    text += more;
}

}  // namespace

std::string ScriptInput::name() const {
    std::string all = lines.empty() ? "" : "-e";
    for (const std::string& file : files) all += (all.empty() ? "" : "+") + file;
    return all;
}

bool ScriptInput::isComplete() {
    if (lines.empty() && files.empty() && isatty(STDIN_FILENO) == 0) files = {kStandardInput};
    return !lines.empty() || !files.empty();
}

Problem ScriptInput::readStandardInput() {
    if (std::find(files.begin(), files.end(), kStandardInput) == files.end()) return {};
    char buffer[65536];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, stdin)) {
        standardInput.append(buffer, count);
        if (standardInput.size() > kLongestInput)
            return {kStandardInput, "is longer than a script may be"};
    }
    return {kStandardInput, std::ferror(stdin) != 0 ? "cannot be read" : ""};
}

Problem ScriptInput::load(ScriptSession& session) const {
    if (lines.empty() && files.size() == 1)
        return {name(), files.front() == kStandardInput ? session.loadBytes(standardInput)
                                                        : session.loadFile(files.front())};
    std::string text;
    if (Problem problem = join(text)) return problem;
    return {name(), session.loadText(text)};
}

Problem ScriptInput::join(std::string& text) const {
    for (const std::string& line : lines) appendLines(text, line);
    for (const std::string& file : files) {
        std::string source;
        if (std::string reason = readSource(file, source); !reason.empty()) return {file, reason};
        appendLines(text, source);
    }
    return {};
}

std::string ScriptInput::readSource(const std::string& file, std::string& utf8) const {
    ScriptSession session;
    if (std::string reason = session.open(""); !reason.empty()) return reason;
    return file == kStandardInput ? session.readSourceOfBytes(standardInput, utf8)
                                  : session.readSource(file, utf8);
}

}  // namespace osa::cli
