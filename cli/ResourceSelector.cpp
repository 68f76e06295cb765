// Selectors and Mac Roman text for the command line.
#include "cli/ResourceSelector.h"

#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>
#include <CoreServices/MacErrors.h>

#include <array>
#include <charconv>

#include "cli/RecordFormat.h"

namespace osa::cli {
namespace {

std::optional<SInt16> parseID(std::string_view text) {
    SInt16 id = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), id);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
    return id;
}

std::optional<ResType> parseType(std::string_view utf8) {
    const auto string = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(utf8.data()),
                                static_cast<CFIndex>(utf8.size()), kCFStringEncodingUTF8, false));
    std::array<unsigned char, 6> pascal{};
    if (!string || !CFStringGetPascalString(string.get(), pascal.data(), pascal.size(),
                                            kCFStringEncodingMacRoman)) {
        return std::nullopt;
    }
    if (pascal[0] == 0 || pascal[0] > 4) return std::nullopt;
    ResType type = 0;
    for (unsigned i = 1; i <= 4; ++i) type = type << 8 | (i <= pascal[0] ? pascal[i] : ' ');
    return type;
}

}  // namespace

std::optional<ResourceSelector> parseResourceSelector(std::string_view text) {
    const std::size_t colon = text.rfind(':');
    if (colon != std::string_view::npos) {
        const auto id = parseID(text.substr(colon + 1));
        if (id && colon == 0) return std::nullopt;
        const auto type = parseType(text.substr(0, colon));
        if (id && type) return ResourceSelector{*type, id};
    }
    const auto type = parseType(text);
    if (!type) return std::nullopt;
    return ResourceSelector{*type, std::nullopt};
}

std::string macRomanText(const unsigned char* bytes, std::size_t length) {
    std::string printable(reinterpret_cast<const char*>(bytes), length);
    for (char& byte : printable) {
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) byte = '.';
    }
    const auto string = CFRef<CFStringRef>::Adopt(CFStringCreateWithBytes(
        kCFAllocatorDefault, reinterpret_cast<const UInt8*>(printable.data()),
        static_cast<CFIndex>(printable.size()), kCFStringEncodingMacRoman, false));
    return toUTF8(string.get());
}

std::string fourCharText(ResType type) {
    const unsigned char bytes[4] = {
        static_cast<unsigned char>(type >> 24), static_cast<unsigned char>(type >> 16),
        static_cast<unsigned char>(type >> 8), static_cast<unsigned char>(type)};
    return macRomanText(bytes, sizeof bytes);
}

std::string resourceReason(OSStatus status) {
    switch (status) {
        case noErr:
            return {};
        case fnfErr:
            return "no such file";
        case notAFileErr:
            return "is a folder";
        case eofErr:
        case errFSForkNotFound:
            return "has no resources";
        case mapReadErr:
            return "the resource map is damaged";
        case CantDecompress:
            return "the resource is compressed in a way that is not known, or damaged";
        case permErr:
            return "may not be read";
        case wrPermErr:
        case fLckdErr:
        case afpAccessDenied:
            return "may not be written";
        case wPrErr:
            return "is on a volume that is read-only";
        case dskFulErr:
            return "the volume is full";
        case addResFailed:
        case fileBoundsErr:
            return "that is more than a resource map can hold";
        default:
            return "cannot be read or written (status " + std::to_string(status) + ")";
    }
}

}  // namespace osa::cli
