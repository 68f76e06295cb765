// What a command compiles or runs: lines, files, standard input.
#pragma once

#include <string>
#include <vector>

#include "cli/scripts/ScriptSession.h"

namespace osa::cli {

/// What failed, by the name that people gave it; without a reason all went well.
struct Problem {
    std::string name;
    std::string reason;
    explicit operator bool() const { return !reason.empty(); }
};

/// Lines come before files. A single file may be a stored script; what there is besides is joined
/// as text, with the sources of stored scripts.
struct ScriptInput {
    std::vector<std::string> lines;
    std::vector<std::string> files;  ///< "-" is standard input
    std::string standardInput;

    /// What it is called in messages: all of it when it is joined, as lines are counted through.
    std::string name() const;
    /// Takes standard input when neither lines nor files are given, unless that is a terminal;
    /// false when there is nothing then.
    bool isComplete();
    /// Reads standard input where it is wanted.
    Problem readStandardInput();
    Problem load(ScriptSession& session) const;
    /// The source of one of the files in UTF-8. Why there is none, or nothing.
    std::string readSource(const std::string& file, std::string& utf8) const;

  private:
    Problem join(std::string& text) const;
};

}  // namespace osa::cli
