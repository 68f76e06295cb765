// Reads documents and chooses how to make text of them.
#include "platform/foundation/DocumentFiles.h"

#include <CoreServices/MacErrors.h>

#include <array>

#include "platform/foundation/RichText.h"
#include "platform/posix/FileSystem.h"
#include "platform/text/TextConverter.h"

namespace osa {

Result<std::string> pathOfURL(CFURLRef url) {
    std::array<UInt8, 4096> buffer{};
    if (url == nullptr ||
        !CFURLGetFileSystemRepresentation(url, true, buffer.data(), buffer.size()))
        return Failure(fnfErr);
    return std::string(reinterpret_cast<const char*>(buffer.data()));
}

Result<std::vector<std::byte>> readDocument(const std::string& path) {
    return posix::readFile(path, kLargestDocument);
}

CFRef<CFStringRef> plainTextString(ByteSpan bytes) {
    const ByteOrderMark mark = detectMark(bytes);
    const UInt32 encoding = mark.length > 0 ? mark.encoding : CFStringGetSystemEncoding();
    const ByteSpan text = bytes.subspan(mark.length);
    return CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                static_cast<CFIndex>(text.size()), encoding, false));
}

CFRef<CFStringRef> documentString(const std::string& path) {
    const auto status = posix::status(path, posix::Follow::yes);
    if (!status) return {};
    const auto bytes = readDocument(status->isFolder() ? path + "/TXT.rtf" : path);
    if (!bytes) return {};
    if (!isRichText(*bytes)) return plainTextString(*bytes);
    const std::u16string text = plainTextOfRichText(*bytes);
    return CFRef<CFStringRef>::Adopt(CFStringCreateWithCharacters(
        kCFAllocatorDefault, reinterpret_cast<const UniChar*>(text.data()),
        static_cast<CFIndex>(text.size())));
}

}  // namespace osa
