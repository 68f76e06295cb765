// Reads user-dirs.dirs.
#include "platform/files/special/UserDirs.h"

#include "platform/base/ByteReader.h"

namespace osa {
namespace {

constexpr std::string_view kHome = "$HOME";

/// The text up to `end`, which goes with it.
std::string_view takeUntil(ByteReader& in, char end) {
    const std::string_view rest = asText(ByteReader(in).rest());
    const std::string_view taken = in.text(std::min(rest.find(end), rest.size()));
    if (!in.atEnd()) in.skip(1);
    return taken;
}

/// What stands in quotes at the start; false when it does not end.
bool readQuoted(std::string_view text, std::string& value) {
    ByteReader in(asBytes(text));
    if (in.u8() != '"') return false;
    while (in.ok() && in.peek() != '"') {
        if (in.peek() == '\\') in.skip(1);
        value += static_cast<char>(in.u8());
    }
    return in.ok() && !in.atEnd() && value.find('\0') == value.npos;
}

std::string pathOf(std::string value, const std::string& home) {
    while (value.size() > 1 && value.ends_with('/')) value.pop_back();
    if (value == kHome) return home;
    const bool isBelowHome = value.starts_with(kHome) && value[kHome.size()] == '/';
    if (isBelowHome) return home + value.substr(kHome.size());
    return value.starts_with('/') ? value : "";
}

}  // namespace

std::string userDirectory(std::string_view lines, std::string_view key, const std::string& home) {
    std::string found;
    ByteReader in(asBytes(lines));
    while (!in.atEnd()) {
        std::string_view line = takeUntil(in, '\n');
        line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
        if (!line.starts_with(key) || !line.substr(key.size()).starts_with('=')) continue;
        std::string value;
        if (!readQuoted(line.substr(key.size() + 1), value)) continue;
        std::string path = pathOf(std::move(value), home);
        if (!path.empty()) found = std::move(path);
    }
    return found;
}

}  // namespace osa
