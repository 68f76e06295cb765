// osa describe: flattened descriptors, one a file, as text.
#include <CoreServices/AEHelpers.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <CLI/CLI.hpp>
#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "cli/Command.h"
#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 30;

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

std::string reasonForErrno(int error) {
    switch (error) {
        case ENOENT:
        case ENOTDIR:
            return "no such file";
        case EISDIR:
            return "is a folder";
        case EACCES:
        case EPERM:
            return "may not be read";
        default:
            return "cannot be read";
    }
}

std::string reasonFor(OSStatus status) {
    if (status == errAECorruptData) return "is no flattened descriptor, or a damaged one";
    if (status == memFullErr) return "is too large to be described";
    return "cannot be described (status " + std::to_string(status) + ")";
}

/// Empty when all went well; so below.
std::string readWhole(const std::string& path, std::string& bytes) {
    const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path.c_str(), "rb"));
    if (file == nullptr) return reasonForErrno(errno);
    std::array<char, 65536> buffer;
    std::size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), file.get())) > 0) {
        if (count > kLargestFile - bytes.size()) return "is larger than 1 GiB";
        bytes.append(buffer.data(), count);
    }
    return std::ferror(file.get()) != 0 ? reasonForErrno(errno) : std::string();
}

std::string print(const std::string& bytes, const std::string& heading) {
    AEDesc desc;
    OSStatus status = AEUnflattenDescFromBytes(bytes.data(), bytes.size(), &desc);
    if (status != noErr) return reasonFor(status);
    Handle text = nullptr;
    status = AEPrintDescToHandle(&desc, &text);
    AEDisposeDesc(&desc);
    if (status != noErr) return reasonFor(status);
    std::printf("%s%s\n", heading.c_str(), *text);
    DisposeHandle(text);
    return {};
}

std::string describeFile(const std::string& path, bool isNamed) try {
    std::string bytes;
    if (std::string reason = readWhole(path, bytes); !reason.empty()) return reason;
    return print(bytes, isNamed ? forTerminal(path) + ":\n" : std::string());
} catch (const std::bad_alloc&) {
    return reasonFor(memFullErr);
}

}  // namespace

void addDescribeCommand(CLI::App& program, int& exitStatus) {
    auto files = std::make_shared<std::vector<std::string>>();
    CLI::App* const command =
        program.add_subcommand("describe", "Show the flattened descriptors in files as text");
    command->group("");  // for developers: not in the program's help
    command->add_option("files", *files, "Files")->required()->type_name("FILE");
    command->callback([files, &exitStatus] {
        exitStatus = forEachFile(
            *files, [&](const std::string& file) { return describeFile(file, files->size() > 1); });
    });
}

}  // namespace osa::cli
