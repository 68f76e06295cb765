// Reads desktop entries. Only a few of an entry's lines are ever asked for, so that the group is
// kept as it is and searched, not taken apart.
#include "platform/services/applications/DesktopEntry.h"

#include <algorithm>

#include "platform/posix/FileSystem.h"
#include "platform/text/TextConverter.h"

namespace osa {
namespace {

constexpr std::uint64_t kMaxBytes = 1 << 20;
constexpr std::string_view kGroupHeader = "[Desktop Entry]";

/// The next line without its end. Files from elsewhere end theirs with CR and LF.
std::string_view takeLine(ByteReader& reader) {
    const std::string_view rest = asText(ByteReader(reader).rest());
    std::string_view line = reader.text(std::min(rest.find('\n'), rest.size()));
    if (!reader.atEnd()) reader.skip(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

bool isBlank(char byte) {
    return byte == ' ' || byte == '\t';
}

std::string_view withoutBlanksBehind(std::string_view text) {
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

struct Line {
    std::string_view key;
    std::string_view language;  // empty: none
    std::string_view value;
};

/// An empty key: the line says nothing.
Line splitLine(std::string_view text) {
    const std::size_t equals = text.find('=');
    if (equals == text.npos || text.starts_with('#')) return {};
    Line line{withoutBlanksBehind(text.substr(0, equals)), {}, text.substr(equals + 1)};
    while (!line.value.empty() && isBlank(line.value.front())) line.value.remove_prefix(1);
    const std::size_t bracket = line.key.find('[');
    if (bracket == line.key.npos) return line;
    if (!line.key.ends_with(']') || bracket + 2 >= line.key.size()) return {};
    line.language = line.key.substr(bracket + 1, line.key.size() - bracket - 2);
    line.key = line.key.substr(0, bracket);
    return line;
}

bool isProperText(std::string_view value) {
    std::u16string units;
    return value.find('\0') == value.npos && utf16FromUTF8(value, units);
}

std::string withoutEscapes(std::string_view value) {
    static constexpr std::string_view kLetters = "sntr\\";
    static constexpr std::string_view kMeanings = " \n\t\r\\";
    std::string text;
    text.reserve(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
        const bool isEscape = value[i] == '\\' && i + 1 < value.size();
        const std::size_t letter = isEscape ? kLetters.find(value[i + 1]) : kLetters.npos;
        text += letter == kLetters.npos ? value[i] : kMeanings[letter];
        if (letter != kLetters.npos) ++i;
    }
    return text;
}

}  // namespace

std::vector<std::string> languagesOfLocale(std::string_view locale) {
    const std::size_t at = locale.find('@');
    const std::string modifier(at == locale.npos ? "" : locale.substr(at));
    locale = locale.substr(0, std::min(at, locale.find('.')));
    const std::string withCountry(locale);
    const std::string bare(locale.substr(0, locale.find('_')));
    if (bare.empty() || bare == "C" || bare == "POSIX") return {};
    std::vector<std::string> languages;
    for (const std::string& language : {withCountry, bare}) {
        if (!languages.empty() && bare == withCountry) break;
        if (!modifier.empty()) languages.push_back(language + modifier);
        languages.push_back(language);
    }
    return languages;
}

std::vector<std::string> desktopLanguages() {
    for (const char* const variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const std::string locale = posix::environment(variable);
        if (!locale.empty()) return languagesOfLocale(locale);
    }
    return {};
}

std::optional<DesktopEntry> DesktopEntry::parse(ByteSpan bytes) {
    if (bytes.size() > kMaxBytes) return std::nullopt;
    ByteReader reader(bytes);
    while (!reader.atEnd()) {
        std::string_view line = takeLine(reader);
        if (line.starts_with("\xEF\xBB\xBF")) line.remove_prefix(3);
        if (withoutBlanksBehind(line) != kGroupHeader) continue;
        const std::size_t start = reader.position();
        std::size_t end = start;
        while (!reader.atEnd() && !takeLine(reader).starts_with('[')) end = reader.position();
        return DesktopEntry(asText(bytes.subspan(start, end - start)));
    }
    return std::nullopt;
}

std::optional<DesktopEntry> DesktopEntry::read(const std::string& path) {
    const auto bytes = posix::readFile(path, kMaxBytes);
    return bytes.ok() ? parse(*bytes) : std::nullopt;
}

std::string DesktopEntry::localText(std::string_view key,
                                    const std::vector<std::string>& languages) const {
    // The language's place in the list; behind it the value without language, then none at all.
    std::size_t bestRank = languages.size() + 1;
    std::string_view best;
    ByteReader reader(asBytes(group_));
    while (!reader.atEnd() && bestRank != 0) {
        const Line line = splitLine(takeLine(reader));
        if (line.key != key) continue;
        const auto found = std::find(languages.begin(), languages.end(), line.language);
        if (found == languages.end() && !line.language.empty()) continue;
        const auto rank = static_cast<std::size_t>(found - languages.begin());
        if (rank >= bestRank || !isProperText(line.value)) continue;
        bestRank = rank;
        best = line.value;
    }
    return withoutEscapes(best);
}

bool DesktopEntry::isTrue(std::string_view key) const {
    // "1" is how entries said it before there was a rule.
    const std::string value = text(key);
    return withoutBlanksBehind(value) == "true" || withoutBlanksBehind(value) == "1";
}

}  // namespace osa
