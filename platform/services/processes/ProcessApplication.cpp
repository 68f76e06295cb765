// Telling the application of a process from its program, its environment and its service unit.
#include "platform/services/processes/ProcessApplication.h"

#include <CoreServices/MacErrors.h>

#include <charconv>
#include <optional>

#include "platform/bundles/BundleLayout.h"
#include "platform/services/applications/ApplicationKinds.h"
#include "platform/services/launching/LaunchVariables.h"

namespace osa {
namespace {

constexpr std::string_view kUnitStart = "app-";

/// "\x2d" is "-".
std::string unescaped(std::string_view text) {
    constexpr std::size_t length = 4;
    std::string plain;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const std::string_view escape = text.substr(at, length);
        const char* const end = escape.data() + escape.size();
        unsigned byte = 0;
        if (escape.size() == length && escape.starts_with("\\x") &&
            std::from_chars(end - 2, end, byte, 16).ptr == end) {
            plain += static_cast<char>(byte);
            at += length - 1;
        } else {
            plain += text[at];
        }
    }
    return plain;
}

/// The name without its start, its random part and its kind; none of another form.
std::optional<std::string_view> middleOfUnit(std::string_view unit) {
    const auto cut = [&](std::string_view kind) {
        if (!unit.starts_with(kUnitStart) || !unit.ends_with(kind)) return false;
        unit.remove_suffix(kind.size());
        unit.remove_prefix(kUnitStart.size());
        return true;
    };
    if (cut(".scope")) {
        const std::size_t random = unit.rfind('-');
        if (random == std::string_view::npos) return std::nullopt;
        return unit.substr(0, random);
    }
    if (cut(".service")) return unit.substr(0, unit.rfind('@'));
    return std::nullopt;
}

std::optional<Application> desktopEntryAt(const std::string& path) {
    if (!path.starts_with('/')) return std::nullopt;
    auto found = applicationAt(path);
    if (!found.ok() || found->kind != Application::Kind::desktopEntry) return std::nullopt;
    return *std::move(found);
}

/// A launcher gives its environment on to all that its programs start, so it says whom it means.
std::optional<Application> entryOfLauncher(std::uint32_t id) {
    const auto meant = posix::startEnvironment(id, kEntryProcessVariable);
    if (!meant.ok() || *meant != std::to_string(id)) return std::nullopt;
    const auto path = posix::startEnvironment(id, kEntryVariable);
    return path.ok() ? desktopEntryAt(*path) : std::nullopt;
}

std::optional<Application> entryOfUnit(const posix::ProcessFacts& process) {
    const auto unit = posix::serviceUnit(process.id);
    if (!unit.ok() || !unit->starts_with(kUnitStart)) return std::nullopt;
    const auto parentUnit = posix::serviceUnit(process.parent);
    if (parentUnit.ok() && *parentUnit == *unit) return std::nullopt;
    for (const std::string& identifier : entriesOfUnit(*unit)) {
        const auto path = desktopEntryPath(identifier);
        if (auto found = path ? desktopEntryAt(*path) : std::nullopt) return found;
    }
    return std::nullopt;
}

/// Any file that runs, whatever else it might pass for.
Application bareProgram(const std::string& path) {
    auto found = applicationAt(path);
    if (found.ok() && found->kind == Application::Kind::program) return *std::move(found);
    Application program;
    program.path = path;
    program.name = leafName(path);
    return program;
}

}  // namespace

std::vector<std::string> entriesOfUnit(std::string_view unit) {
    const auto middle = middleOfUnit(unit);
    if (!middle || middle->empty()) return {};
    std::vector<std::string> identifiers;
    const std::size_t launcherEnd = middle->find('-');
    if (launcherEnd != std::string_view::npos && launcherEnd + 1 < middle->size()) {
        identifiers.push_back(unescaped(middle->substr(launcherEnd + 1)));
    }
    identifiers.push_back(unescaped(*middle));
    return identifiers;
}

Result<Application> applicationOf(const posix::ProcessFacts& process) {
    const auto program = posix::programOf(process.id);
    if (!program.ok() && program.status() != fnfErr) return Failure(program.status());
    if (program.ok()) {
        const auto layout = enclosingBundle(*program);
        const auto bundle = layout ? bundleAt(layout->root) : CFRef<CFBundleRef>();
        if (bundle) return describeBundle(bundle.get(), layout->root);
    }
    if (auto entry = entryOfLauncher(process.id)) return *std::move(entry);
    if (auto entry = entryOfUnit(process)) return *std::move(entry);
    if (!program.ok()) return Failure(program.status());
    return bareProgram(*program);
}

}  // namespace osa
