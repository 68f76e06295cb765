// Everything a side file can be asked for, and Finder information and forks written into it.
#include <cstdlib>

#include "platform/files/formats/AppleDouble.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace osa;
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto parsed = AppleDouble::parse(std::make_shared<MemorySource>(bytes));
    if (!parsed.ok()) return 0;
    (void)parsed->finderInfoContent();
    (void)parsed->dates();
    for (const auto& entry : parsed->entries()) {
        if (!entry.range.fits(size)) std::abort();
        const auto content = parsed->content(entry.id);
        if (!readRange(*content, {0, content->size()}).ok()) std::abort();
    }
    FinderInfoBytes info;
    info.fill(std::byte{0x5A});
    const auto written = parsed->withFinderInfo(info);
    if (written.ok()) {
        const auto again = AppleDouble::parse(*written);
        if (!again.ok() || *again->finderInfoContent() != info) std::abort();
    }
    const ByteSpan fork = asBytes("a fork");
    const auto forked = parsed->withResourceFork(fork);
    if (forked.ok()) {
        const auto again = AppleDouble::parse(*forked);
        if (!again.ok()) std::abort();
        const auto content = again->content(AppleDouble::resourceFork);
        const auto found = readRange(*content, {0, content->size()});
        if (!found.ok() || asText(*found) != asText(fork)) std::abort();
    }
    const auto attributes = parsed->attributes();
    if (!attributes.ok()) return 0;
    for (const auto& attribute : *attributes) {
        if (!attribute.range.fits(size)) std::abort();
    }
    return 0;
}
