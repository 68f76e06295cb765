// The key Exec of a desktop entry: a command line that no shell ever sees.
//
// Arguments stand between spaces. Inside double quotes a backslash takes the meaning from the
// characters " ` $ and \ and every other character is itself; a field code there is no code.
// Quotes may also stand around a part of an argument, as many entries have them. Outside quotes the
// other characters that mean something to shells make the line invalid.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace osa {

/// What field codes other than documents stand for.
struct ExecFields {
    std::string icon;  ///< %i, as "--icon" and this; empty: nothing
    std::string name;  ///< %c
    std::string path;  ///< %k
};

class ExecLine {
  public:
    using Arguments = std::vector<std::string>;

    /// `line` has its entry's escapes undone. None when it is invalid: bad quoting, an unknown
    /// code, more than one code for documents, %F, %U or %i inside an argument, a code in the
    /// program's place, longer than 32 KiB or with more than 16 codes.
    static std::optional<ExecLine> parse(std::string_view line);

    /// As it stands in the line.
    const std::string& program() const { return arguments_.front().front().text; }
    /// The arguments, the program first, of the commands that open the documents (absolute paths):
    /// one each where the line takes a single one, else one. A line that takes none is started as
    /// it is. An argument of codes alone that stand for nothing is left out.
    std::vector<Arguments> commands(const ExecFields& fields,
                                    const std::vector<std::string>& documents) const;

  private:
    friend class ExecParser;
    struct Piece {
        char code = 0;  // 0: the text
        std::string text;
    };
    using Argument = std::vector<Piece>;

    Arguments command(const ExecFields& fields, const std::vector<std::string>& documents) const;

    std::vector<Argument> arguments_;
    char documentCode_ = 0;  // 0: takes none
};

}  // namespace osa
