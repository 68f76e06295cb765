// Takes command lines of desktop entries apart and fills in their field codes.
#include "platform/services/applications/ExecLine.h"

#include "platform/base/ByteReader.h"
#include "platform/cf/url/PercentEscapes.h"

namespace osa {
namespace {

constexpr std::size_t kMaxLine = 32 << 10;
constexpr int kMaxCodes = 16;
constexpr std::string_view kReserved = "\t\n\r'\\><~|&;$*?#()`";
constexpr std::string_view kDocumentCodes = "fFuU";
constexpr std::string_view kKnownCodes = "fFuUick";
/// Entries still have them; they stand for nothing.
constexpr std::string_view kFormerCodes = "dDnNvm";

bool contains(std::string_view set, char byte) {
    return set.find(byte) != set.npos;
}

std::string documentText(char code, const std::string& path) {
    return code == 'u' || code == 'U' ? "file://" + escapePath(path) : path;
}

}  // namespace

class ExecParser {
  public:
    explicit ExecParser(std::string_view line) : reader_(asBytes(line)) {}

    bool parse(ExecLine& line);

  private:
    bool argument();
    bool quoted();
    bool code();
    bool isWellFormed(const ExecLine::Argument& argument) const;
    void literal(char byte) {
        if (argument_.empty() || argument_.back().code != 0) argument_.emplace_back();
        argument_.back().text += byte;
    }
    char take() { return static_cast<char>(reader_.u8()); }

    ByteReader reader_;
    ExecLine::Argument argument_;
    char documentCode_ = 0;
    int codes_ = 0;
};

bool ExecParser::parse(ExecLine& line) {
    if (reader_.size() > kMaxLine) return false;
    for (;;) {
        while (reader_.peek() == ' ') reader_.skip(1);
        if (reader_.atEnd()) break;
        if (!argument() || !isWellFormed(argument_)) return false;
        // Nothing but former codes.
        if (!argument_.empty()) line.arguments_.push_back(std::move(argument_));
        argument_.clear();
    }
    line.documentCode_ = documentCode_;
    if (line.arguments_.empty()) return false;
    // A document or a name must never become the program.
    const ExecLine::Argument& program = line.arguments_.front();
    return program.size() == 1 && program.front().code == 0 && !program.front().text.empty();
}

bool ExecParser::argument() {
    while (!reader_.atEnd() && reader_.peek() != ' ') {
        const char byte = take();
        if (byte == '"') {
            if (!quoted()) return false;
        } else if (byte == '%') {
            if (!code()) return false;
        } else if (byte == '\0' || contains(kReserved, byte)) {
            return false;
        } else {
            literal(byte);
        }
    }
    return true;
}

bool ExecParser::quoted() {
    // Quotes around nothing are an argument too.
    if (argument_.empty() || argument_.back().code != 0) argument_.emplace_back();
    while (!reader_.atEnd()) {
        const char byte = take();
        if (byte == '"') return true;
        if (byte == '\0') return false;
        const bool isEscape = byte == '\\' && contains("\"`$\\", static_cast<char>(reader_.peek()));
        literal(isEscape && !reader_.atEnd() ? take() : byte);
    }
    return false;
}

bool ExecParser::code() {
    const char code = take();
    if (!reader_.ok()) return false;
    if (code == '%') {
        literal('%');
        return true;
    }
    if (++codes_ > kMaxCodes) return false;
    if (contains(kFormerCodes, code)) return true;
    if (!contains(kKnownCodes, code)) return false;
    if (contains(kDocumentCodes, code)) {
        if (documentCode_ != 0) return false;
        documentCode_ = code;
    }
    argument_.push_back({code, {}});
    return true;
}

/// Codes that stand for several arguments must be alone.
bool ExecParser::isWellFormed(const ExecLine::Argument& argument) const {
    if (argument.size() <= 1) return true;
    for (const ExecLine::Piece& piece : argument) {
        if (piece.code != 0 && contains("FUi", piece.code)) return false;
    }
    return true;
}

std::optional<ExecLine> ExecLine::parse(std::string_view text) {
    ExecLine line;
    if (!ExecParser(text).parse(line)) return std::nullopt;
    return line;
}

std::vector<ExecLine::Arguments> ExecLine::commands(
    const ExecFields& fields, const std::vector<std::string>& documents) const {
    const bool takesOne = documentCode_ == 'f' || documentCode_ == 'u';
    if (!takesOne || documents.size() <= 1) return {command(fields, documents)};
    std::vector<Arguments> commands;
    for (const std::string& document : documents) commands.push_back(command(fields, {document}));
    return commands;
}

ExecLine::Arguments ExecLine::command(const ExecFields& fields,
                                      const std::vector<std::string>& documents) const {
    Arguments arguments;
    for (const Argument& argument : arguments_) {
        const char only = argument.size() == 1 ? argument.front().code : '\0';
        if (only == 'F' || only == 'U') {
            for (const std::string& path : documents) arguments.push_back(documentText(only, path));
            continue;
        }
        if (only == 'i') {
            if (!fields.icon.empty()) arguments.insert(arguments.end(), {"--icon", fields.icon});
            continue;
        }
        std::string text;
        bool isLiteral = false;
        for (const Piece& piece : argument) {
            isLiteral |= piece.code == 0;
            text += piece.text;
            if (piece.code == 'c') text += fields.name;
            if (piece.code == 'k') text += fields.path;
            if (contains("fu", piece.code) && !documents.empty())
                text += documentText(piece.code, documents.front());
        }
        if (isLiteral || !text.empty()) arguments.push_back(std::move(text));
    }
    return arguments;
}

}  // namespace osa
