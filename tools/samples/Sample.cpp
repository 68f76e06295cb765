// Writing described samples to disk.
#include "tools/samples/Sample.h"

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <sys/xattr.h>

#include <fstream>
#include <stdexcept>

#include "platform/base/ByteReader.h"
#include "tools/samples/AppleDoubleBuilder.h"
#include "tools/samples/ArchiveBuilder.h"
#include "tools/samples/ResourceForkBuilder.h"

namespace osa::samples {
namespace {

namespace fs = std::filesystem;

FourCharCode code(const Json& object, const char* key) {
    const std::string text = object.value(key, "");
    if (text.empty()) return 0;
    if (text.size() != 4) throw std::runtime_error("\"" + text + "\" has not four characters");
    return ByteReader(text.data(), 4).fourCC();
}

std::string fromHex(const std::string& digits) {
    std::string bytes;
    std::string pair;
    for (const char digit : digits) {
        if (digit == ' ') continue;
        pair += digit;
        if (pair.size() == 2) {
            bytes += static_cast<char>(std::stoi(pair, nullptr, 16));
            pair.clear();
        }
    }
    return bytes;
}

std::string macRoman(const std::string& utf8) {
    const auto string = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
    std::string bytes(utf8.size(), '\0');
    CFIndex used = 0;
    CFStringGetBytes(string.get(), CFRangeMake(0, CFStringGetLength(string.get())),
                     kCFStringEncodingMacRoman, '?', false, reinterpret_cast<UInt8*>(bytes.data()),
                     static_cast<CFIndex>(bytes.size()), &used);
    bytes.resize(static_cast<std::size_t>(used));
    return bytes;
}

std::string content(const Json& described, bool isResource) {
    if (described.contains("hex")) return fromHex(described.at("hex"));
    if (described.contains("archive")) {
        const bool big = described.value("order", "little") == "big";
        return ArchiveBuilder(big ? ByteOrder::big : ByteOrder::little)
            .build(described.at("archive"));
    }
    const std::string text = described.value("text", "");
    return isResource ? macRoman(text) : text;
}

void writeFile(const fs::path& path, const std::string& bytes) {
    fs::create_directories(path.parent_path());
    std::ofstream stream(path, std::ios::binary);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) throw std::runtime_error("cannot write " + path.string());
}

bool setAttribute(const fs::path& file, const char* name, const std::string& value) {
    return setxattr(file.c_str(), name, value.data(), value.size(), 0) == 0;
}

bool storeInAttributes(const fs::path& file, const std::string& info, const std::string& fork) {
    return setAttribute(file, "user.com.apple.FinderInfo", info) &&
           (fork.empty() || setAttribute(file, "user.com.apple.ResourceFork", fork));
}

void storeFork(const fs::path& file, const std::string& store, const std::string& info,
               const std::string& fork) {
    const fs::path folder = file.parent_path();
    const std::string name = file.filename();
    if (store == "attributes" && storeInAttributes(file, info, fork)) return;
    if (store == ".rsrc") {
        writeFile(folder / ".rsrc" / name, fork);
        writeFile(folder / ".finf" / name, info);
        return;
    }
    const std::string sideFile = appleDouble(info, fork);
    if (store == ".AppleDouble") {
        writeFile(folder / ".AppleDouble" / name, sideFile);
    } else if (store == "%") {
        writeFile(folder / ("%" + name), sideFile);
    } else if (store == "__MACOSX") {
        writeFile(folder / "__MACOSX" / ("._" + name), sideFile);
    } else {
        writeFile(folder / ("._" + name), sideFile);
    }
}

}  // namespace

Json readSample(const fs::path& file) {
    std::ifstream stream(file);
    try {
        return Json::parse(stream);
    } catch (const std::exception& error) {
        throw std::runtime_error(file.string() + ": " + error.what());
    }
}

std::string buildFork(const Json& sample) {
    if (!sample.contains("resources")) return {};
    ResourceForkBuilder fork;
    for (const Json& resource : sample.at("resources")) {
        const std::string name = resource.value("name", "");
        fork.add(code(resource, "type"), resource.at("id").get<int>(), content(resource, true),
                 resource.contains("name") ? name.c_str() : nullptr,
                 resource.value("attributes", 0));
    }
    return fork.text();
}

fs::path writeSample(const Json& sample, const fs::path& folder) {
    const fs::path item = folder / sample.at("name").get<std::string>();
    if (sample.contains("files")) {
        for (const auto& [path, described] : sample.at("files").items()) {
            writeFile(item / path, content(described, false));
        }
        return item;
    }
    writeFile(item, sample.contains("data") ? content(sample.at("data"), false) : std::string());
    const std::string fork = buildFork(sample);
    const std::string info = finderInfoBytes(code(sample, "type"), code(sample, "creator"),
                                             sample.value("flags", std::uint16_t{0}));
    const bool hasInfo = sample.contains("type") || sample.contains("flags");
    if (hasInfo || !fork.empty()) storeFork(item, sample.value("store", "._"), info, fork);
    return item;
}

}  // namespace osa::samples
