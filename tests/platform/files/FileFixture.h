// A scratch folder and short ways to put files, side files and attributes into it and to ask the
// File Manager about them.
#pragma once

#include "platform/base/ByteWriter.h"
#include "platform/base/FourCC.h"
#include "platform/files/Forks.h"
#include "platform/files/formats/AppleDouble.h"
#include "platform/posix/FileSystem.h"
#include "tests/support/Test.h"

namespace osa::test {

/// Finder information with the given type and creator, everything else zero.
inline std::string finderInfo(FourCharCode type, FourCharCode creator) {
    return ByteWriter().fourCC(type).fourCC(creator).fill(24).takeText();
}

/// A resource fork without resources whose data is `data`.
inline std::string resourceFork(const std::string& data) {
    const auto length = static_cast<std::uint32_t>(data.size());
    ByteWriter fork;
    fork.u32(16).u32(16 + length).u32(length).u32(30).text(data);
    return fork.fill(24).u16(28).u16(30).u16(0xFFFF).takeText();
}

/// Builds an AppleDouble file from its entries, which lie behind the table in the given order.
struct AppleDoubleBuilder {
    std::vector<std::pair<std::uint32_t, std::string>> entries;
    std::uint32_t magic = 0x00051607;
    std::uint32_t version = 0x00020000;
    std::uint32_t excess = 0;  ///< promised by each entry beyond what there is

    std::string build() const {
        ByteWriter file;
        file.u32(magic).u32(version).fill(16, ' ').u16(static_cast<std::uint16_t>(entries.size()));
        auto offset = static_cast<std::uint32_t>(26 + 12 * entries.size());
        for (const auto& [id, content] : entries) {
            const auto length = static_cast<std::uint32_t>(content.size());
            file.u32(id).u32(offset).u32(length + excess);
            offset += length;
        }
        for (const auto& entry : entries) file.text(entry.second);
        return file.takeText();
    }
};

/// The usual side file: Finder information and resource fork.
inline std::string appleDouble(const std::string& info, const std::string& fork) {
    return AppleDoubleBuilder{.entries = {{9, info}, {2, fork}}}.build();
}

/// The entries of an AppleDouble file besides the resource fork, and the attributes in them.
inline std::vector<std::string> besidesFork(const std::string& all) {
    std::vector<std::string> found;
    const auto file = AppleDouble::parse(std::make_shared<MemorySource>(asBytes(all)));
    if (!file.ok()) return found;
    for (const auto& [id, range] : file->entries()) {
        if (id == AppleDouble::resourceFork) continue;
        found.push_back(std::to_string(id) + "=" + all.substr(range.offset, range.length));
    }
    const auto attributes = file->attributes();
    for (const auto& [attribute, range] : *attributes) {
        found.push_back(attribute + "=" + all.substr(range.offset, range.length));
    }
    return found;
}

class FileFixture : public testing::Test {
  protected:
    enum class Where { memory, disk };

    explicit FileFixture(Where where = Where::memory) {
        // In memory, if attributes can be set there: on a disk thousands of synchronisations take
        // their time.
        if (where == Where::memory) root_ = scratchFolder("/dev/shm");
        const bool isGood =
            !root_.empty() && posix::setAttribute(root_, "user.probe", asBytes("")).ok();
        if (isGood) return;
        if (!root_.empty()) fs::remove(root_);
        root_ = scratchFolder(onBootVolume({fs::temp_directory_path(), "/var/tmp"}));
    }
    ~FileFixture() override { fs::remove_all(root_); }

    /// The first of them that lies on the root folder's volume, else the first.
    static fs::path onBootVolume(const std::vector<fs::path>& folders) {
        const auto device = [](const fs::path& path) {
            const auto status = posix::status(path, posix::Follow::yes);
            return status.ok() ? status->device : 0;
        };
        const auto found = std::ranges::find(folders, device("/"), device);
        return found == folders.end() ? folders.front() : *found;
    }

    static std::string scratchFolder(const fs::path& folder) {
        std::string pattern = folder / "osa-files-XXXXXX";
        const char* const made = mkdtemp(pattern.data());
        return made == nullptr ? std::string() : fs::canonical(made).string();
    }

    std::string at(const std::string& name) const { return root_ + "/" + name; }

    /// Writes a file, making the folders above it, or an attribute "name@attribute", which must go
    /// on a file that is there.
    std::string put(const std::string& name, const std::string& content = {}) const {
        const std::size_t sign = name.find('@');
        const std::string path = at(name.substr(0, sign));
        if (sign != std::string::npos) {
            const auto set = posix::setAttribute(path, name.substr(sign + 1), asBytes(content));
            EXPECT_TRUE(set.ok()) << name;
            return path;
        }
        fs::create_directories(fs::path(path).parent_path());
        EXPECT_TRUE(posix::writeFile(path, asBytes(content)).ok()) << path;
        return path;
    }

    FSRef ref(const std::string& name) const { return refOf(name.empty() ? root_ : at(name)); }

    /// Of a child of the folder, if only a link.
    FSRef unfollowed(const std::string& name) const {
        const FSRef folder = ref("");
        const std::u16string units(name.begin(), name.end());
        FSRef made{};
        FSMakeFSRefUnicode(&folder, units.size(), reinterpret_cast<const UniChar*>(units.data()), 0,
                           &made);
        return made;
    }

    static OSErr open(const FSRef& object, std::u16string_view name, SInt8 permissions,
                      SInt16& number) {
        return FSOpenFork(&object, name.size(), reinterpret_cast<const UniChar*>(name.data()),
                          permissions, &number);
    }

    static FSCatalogInfo info(const FSRef& object, FSCatalogInfoBitmap which) {
        FSCatalogInfo info{};
        EXPECT_EQ(FSGetCatalogInfo(&object, which, &info, nullptr, nullptr, nullptr), noErr);
        return info;
    }

    static std::string textOf(const ByteSource& source) {
        const auto bytes = readRange(source, {0, source.size()});
        EXPECT_TRUE(bytes.ok());
        return bytes.ok() ? std::string(asText(*bytes)) : std::string();
    }

    /// The fork's content, or the status as "status -43".
    static std::string fork(const FSRef& object, ForkKind kind) {
        const auto opened = openForkForReading(object, kind);
        return opened.ok() ? textOf(**opened) : "status " + std::to_string(opened.status());
    }

    /// Of a file, or of an attribute given as "name@attribute"; "none" when there is none.
    std::string content(const std::string& name) const {
        const std::size_t sign = name.find('@');
        const auto bytes = sign == std::string::npos
                               ? posix::readFile(at(name), 1 << 20)
                               : posix::attribute(at(name.substr(0, sign)), name.substr(sign + 1));
        return bytes.ok() ? std::string(asText(*bytes)) : "none";
    }

    /// Everything below the folder, by path.
    std::set<std::string> names() const {
        std::set<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(root_)) {
            found.insert(entry.path().lexically_relative(root_));
        }
        return found;
    }

    std::string root_;
};

/// Descriptors that the process has open.
inline std::size_t openDescriptors() {
    const fs::directory_iterator all("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
}

/// Runs `work` from `prepare` anew with its first, second, … system call failing, alone and with
/// all that come after it, until none does; `check` gets its status. Nothing may be left open.
inline void failEachCall(const std::function<void()>& prepare,
                         const std::function<OSStatus()>& work,
                         const std::function<void(OSStatus)>& check) {
    const std::size_t descriptors = openDescriptors();
    for (UInt32 nth = 1, failed = 1; failed > 0 && nth < 1000; ++nth) {
        SCOPED_TRACE("failing call " + std::to_string(nth));
        for (const bool fromThenOn : {true, false}) {
            SCOPED_TRACE(fromThenOn ? "and all after it" : "alone");
            prepare();
            OSStatus status = noErr;
            failed = failing(nth, fromThenOn, [&] { status = work(); });
            check(status);
            EXPECT_TRUE(failed > 0 || status == noErr) << status;
            EXPECT_EQ(OSAOpenFileCount(), 0);
            EXPECT_EQ(openDescriptors(), descriptors);
        }
    }
}

}  // namespace osa::test
