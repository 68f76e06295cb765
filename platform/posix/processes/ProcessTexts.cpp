// Reading the kernel's texts about a process.
#include "platform/posix/processes/ProcessTexts.h"

#include <unistd.h>

#include <charconv>

namespace osa::posix {
namespace {

/// What lies before `separator`, which goes with it; the rest stays in `text`.
std::string_view takeUntil(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view taken = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    return taken;
}

template <typename Number>
bool readNumber(std::string_view text, Number& number) {
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

std::uint64_t systemValue(int name, std::uint64_t otherwise) {
    const long value = sysconf(name);
    return value > 0 ? static_cast<std::uint64_t>(value) : otherwise;
}

std::uint64_t hundredths(std::uint64_t clockTicks) {
    static const std::uint64_t perSecond = systemValue(_SC_CLK_TCK, 100);
    return clockTicks / perSecond * 100 + clockTicks % perSecond * 100 / perSecond;
}

bool isUserManager(std::string_view component) {
    return component.starts_with("user@") && component.ends_with(".service");
}

std::string unitOfPath(std::string_view path) {
    bool isBelowManager = false;
    std::string_view unit;
    while (!path.empty()) {
        const std::string_view component = takeUntil(path, '/');
        if (isUserManager(component)) {
            isBelowManager = true;
            unit = {};
        } else if (isBelowManager &&
                   (component.ends_with(".scope") || component.ends_with(".service"))) {
            unit = component;
        }
    }
    // A name that could be taken for one of the kernel's own files has this in front.
    if (unit.starts_with('_')) unit.remove_prefix(1);
    return std::string(unit);
}

}  // namespace

std::optional<ProcessFacts> factsFromStat(std::string_view text) {
    // Places of the fields behind the name, which is in brackets and may hold any byte itself.
    enum Field { parent = 1, userTime = 11, systemTime = 12, started = 19, residentPages = 21 };
    const std::size_t name = text.find(" (");
    const std::size_t nameEnd = text.rfind(") ");
    ProcessFacts facts;
    if (name == std::string_view::npos || nameEnd == std::string_view::npos || nameEnd < name ||
        !readNumber(text.substr(0, name), facts.id)) {
        return std::nullopt;
    }
    std::string_view rest = text.substr(nameEnd + 2);
    std::uint64_t user = 0, system = 0, pages = 0;
    for (int field = 0; field <= residentPages; ++field) {
        const std::string_view value = takeUntil(rest, ' ');
        const bool isRead = field == parent          ? readNumber(value, facts.parent)
                            : field == userTime      ? readNumber(value, user)
                            : field == systemTime    ? readNumber(value, system)
                            : field == started       ? readNumber(value, facts.started)
                            : field == residentPages ? readNumber(value, pages)
                                                     : !value.empty();
        if (!isRead) return std::nullopt;
    }
    static const std::uint64_t pageBytes = systemValue(_SC_PAGESIZE, 4096);
    facts.started = hundredths(facts.started);
    facts.processorTime = hundredths(user) + hundredths(system);
    facts.residentBytes = pages * pageBytes;
    return facts;
}

std::string unitFromControlGroups(std::string_view text) {
    std::string older;
    while (!text.empty()) {
        std::string_view line = takeUntil(text, '\n');
        const std::string_view hierarchy = takeUntil(line, ':');
        const std::string_view controllers = takeUntil(line, ':');
        if (hierarchy == "0" && controllers.empty()) {
            if (std::string unit = unitOfPath(line); !unit.empty()) return unit;
        } else if (controllers == "name=systemd") {
            older = unitOfPath(line);
        }
    }
    return older;
}

std::string variableIn(std::string_view environment, std::string_view name) {
    while (!environment.empty()) {
        const std::string_view entry = takeUntil(environment, '\0');
        if (entry.size() > name.size() && entry.starts_with(name) && entry[name.size()] == '=') {
            return std::string(entry.substr(name.size() + 1));
        }
    }
    return {};
}

}  // namespace osa::posix
