// The user's processes, read from /proc.
#include "platform/posix/processes/Processes.h"

#include <CoreServices/MacErrors.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <tuple>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"
#include "platform/posix/UniqueFd.h"
#include "platform/posix/processes/ProcessTexts.h"

namespace osa::posix {
namespace {

constexpr std::size_t kMostOfText = 64 << 10;
constexpr std::size_t kMostOfEnvironment = 1 << 20;
constexpr std::size_t kFirstRead = 4096;

std::string processPath(std::uint32_t id, const char* name) {
    return "/proc/" + std::to_string(id) + name;
}

/// For what a process has as long as one of its threads runs. The kernel looks a process up by its
/// first thread, which may have ended.
std::string livePath(std::uint32_t id, const char* name) {
    return id == processID() ? std::string("/proc/thread-self") + name : processPath(id, name);
}

/// Whatever goes wrong with one process (it is gone, the kernel keeps it to itself), it is nobody's
/// then. Only what the caller has run out of is no matter of the process.
Failure processFailure(OSStatus status) {
    return Failure(status == memFullErr || status == tmfoErr ? status : procNotFound);
}
Failure lastProcessError() {
    return processFailure(statusFromErrno(errno));
}

/// One of a process's texts, no more than `limit` bytes of it. Their size is not known before.
Result<std::string> readText(const std::string& path, std::size_t limit) {
    const UniqueFd descriptor(systemCall([&] { return open(path.c_str(), O_RDONLY | O_CLOEXEC); }));
    if (!descriptor.valid()) return lastProcessError();
    std::string text;
    std::size_t length = 0;
    while (length < limit) {
        if (length == text.size()) {
            text.resize(std::min(limit, std::max(kFirstRead, text.size() * 2)));
        }
        const ssize_t count = systemCall(
            [&] { return read(descriptor.get(), text.data() + length, text.size() - length); });
        if (count < 0) return lastProcessError();
        if (count == 0) break;
        length += static_cast<std::size_t>(count);
    }
    text.resize(length);
    return text;
}

/// The owner tells whose it is, but for the caller, whose own files another may own when it was
/// given rights by its program file.
Result<void> checkOwner(std::uint32_t id) {
    if (id == processID()) return {};
    const auto folder = status(processPath(id, ""), Follow::yes);
    if (!folder.ok()) return processFailure(folder.status());
    if (folder->uid != geteuid()) return Failure(procNotFound);
    return {};
}

/// fnfErr when the process runs a program file, but at a path that is longer than the kernel tells.
Result<std::string> programLink(std::uint32_t id) {
    auto link = readLink(livePath(id, "/exe"));
    if (link.ok()) return link;
    if (link.status() == errFSNameTooLong) return Failure(fnfErr);
    return processFailure(link.status());
}

Result<ProcessFacts> listedFacts(std::uint32_t id) {
    OSA_CHECK(checkOwner(id));
    const auto program = programLink(id);
    if (!program.ok() && program.status() != fnfErr) return Failure(program.status());
    OSA_TRY(const std::string text, readText(processPath(id, "/stat"), kMostOfText));
    const auto facts = factsFromStat(text);
    if (!facts || facts->id != id) return Failure(procNotFound);
    return *facts;
}

}  // namespace

Result<ProcessFacts> processFacts(std::uint32_t id) {
    // The kernel shows threads by their numbers, too, though it does not list them.
    const auto number = static_cast<pid_t>(id);
    if (number <= 0) return Failure(procNotFound);
    if (systemCall([&] { return tgkill(number, number, 0); }) != 0 && errno != EPERM) {
        return lastProcessError();
    }
    return listedFacts(id);
}

Result<std::vector<ProcessFacts>> processes() {
    OSA_TRY(DirectoryReader folder, DirectoryReader::open("/proc"));
    std::vector<ProcessFacts> found;
    for (;;) {
        OSA_TRY(const std::string name, folder.next());
        if (name.empty()) break;
        std::uint32_t id = 0;
        const auto number = std::from_chars(name.data(), name.data() + name.size(), id);
        if (number.ec != std::errc() || number.ptr != name.data() + name.size()) continue;
        const auto facts = listedFacts(id);
        if (facts.ok()) {
            found.push_back(*facts);
        } else if (facts.status() != procNotFound) {
            return Failure(facts.status());
        }
    }
    std::sort(found.begin(), found.end(), [](const ProcessFacts& one, const ProcessFacts& other) {
        return std::tie(one.started, one.id) < std::tie(other.started, other.id);
    });
    return found;
}

Result<std::string> programOf(std::uint32_t id) {
    OSA_TRY(std::string path, programLink(id));
    const auto running = status(livePath(id, "/exe"), Follow::yes);
    const auto named = status(path, Follow::yes);
    if (!path.starts_with('/') || !running.ok() || !named.ok() || !named->isSameObject(*running)) {
        return Failure(fnfErr);
    }
    return path;
}

Result<std::string> startEnvironment(std::uint32_t id, std::string_view name) {
    OSA_TRY(std::string text, readText(livePath(id, "/environ"), kMostOfEnvironment));
    if (text.size() == kMostOfEnvironment) text.resize(text.rfind('\0') + 1);  // no half variable
    return variableIn(text, name);
}

Result<std::string> serviceUnit(std::uint32_t id) {
    OSA_TRY(const std::string text, readText(livePath(id, "/cgroup"), kMostOfText));
    return unitFromControlGroups(text);
}

}  // namespace osa::posix
