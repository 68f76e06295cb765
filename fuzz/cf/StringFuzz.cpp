// Strings from bytes in any encoding: the first two bytes choose the encoding.
#include <CoreFoundation/CFRef.h>
#include <CoreFoundation/CFString.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

constexpr CFStringEncoding kUnicode[] = {kCFStringEncodingUTF8,    kCFStringEncodingUTF16,
                                         kCFStringEncodingUTF16BE, kCFStringEncodingUTF16LE,
                                         kCFStringEncodingUTF32BE, kCFStringEncodingUTF32LE};

CFStringEncoding chosen(std::uint8_t kind, std::uint8_t which) {
    if (kind == 'U') return kUnicode[which % std::size(kUnicode)];
    return static_cast<CFStringEncoding>(kind << 8 | which);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const CFStringEncoding encoding = chosen(data[0], data[1]);
    const auto length = static_cast<CFIndex>(size - 2);
    const auto string = CFRef<CFStringRef>::Adopt(
        CFStringCreateWithBytes(nullptr, data + 2, length, encoding, true));
    if (!string) return 0;
    const CFRange all = CFRangeMake(0, CFStringGetLength(string.get()));
    for (const CFIndex room :
         {length / 2, CFStringGetMaximumSizeForEncoding(all.length, encoding)}) {
        std::vector<UInt8> buffer(static_cast<std::size_t>(room) + 1);
        CFIndex used = 0;
        const CFIndex converted =
            CFStringGetBytes(string.get(), all, encoding, 0, false, buffer.data(), room, &used);
        if (used > room || converted > all.length) std::abort();
        const auto prefix = CFRef<CFStringRef>::Adopt(
            CFStringCreateWithSubstring(nullptr, string.get(), CFRangeMake(0, converted)));
        const auto again = CFRef<CFStringRef>::Adopt(
            CFStringCreateWithBytes(nullptr, buffer.data(), used, encoding, false));
        // Only our own encodings promise to read back all they write.
        if (data[0] == 'U' && !CFEqual(prefix.get(), again.get())) std::abort();
    }
    return 0;
}
