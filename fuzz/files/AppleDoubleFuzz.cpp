// Everything a side file can be asked for, and Finder information and forks written into it and
// read again beside all else.
#include <algorithm>
#include <cstdlib>
#include <string>

#include "platform/files/formats/AppleDouble.h"

namespace {

using namespace osa;
using Source = std::shared_ptr<const ByteSource>;

void require(bool holds) {
    if (!holds) std::abort();
}

std::string textOf(const ByteSource& source) {
    const auto bytes = readRange(source, {0, source.size()});
    require(bytes.ok());
    return std::string(asText(*bytes));
}

std::string textOf(const ByteSource& file, CheckedRange range) {
    const auto bytes = readRange(file, range);
    require(bytes.ok());
    return std::string(asText(*bytes));
}

std::uint64_t tableEnd(const AppleDouble& file) {
    return 26 + 12 * file.entries().size();
}

/// What was no part of the table is as it was; entries and attributes that promised more than there
/// was may have got more.
void requireOthersKept(const AppleDouble& before, const ByteSource& old, const AppleDouble& after,
                       const ByteSource& now) {
    const auto* const fork = before.find(AppleDouble::resourceFork);
    const auto attributes = before.attributes();
    const auto attributesNow = after.attributes();
    require(attributes.ok() && attributesNow.ok());
    const auto* const info = before.find(AppleDouble::finderInfo);
    // The offsets in an attribute block change when it moves up.
    const CheckedRange block = fork == nullptr && info != nullptr ? info->range : CheckedRange{};
    for (std::size_t i = 0; i < before.entries().size(); ++i) {
        const AppleDouble::Entry& entry = before.entries()[i];
        require(after.entries()[i].id == entry.id);
        const bool isInBlock = entry.range.offset < block.offset + block.length &&
                               block.offset < entry.range.offset + entry.range.length;
        if (&entry == fork || entry.range.offset < tableEnd(before) || isInBlock) continue;
        require(textOf(now, after.entries()[i].range) == textOf(old, entry.range));
    }
    if (info == nullptr || info->range.offset < tableEnd(before)) return;
    require(attributesNow->size() >= attributes->size());
    for (std::size_t i = 0; i < attributes->size(); ++i) {
        const auto& [name, range] = (*attributes)[i];
        require((*attributesNow)[i].name == name);
        if (range.offset < tableEnd(before) || range.offset == old.size()) continue;
        const CheckedRange& moved = (*attributesNow)[i].range;
        if (fork == nullptr) {
            require(moved.offset == range.offset + 12 && moved.length >= range.length);
        } else {
            require(textOf(now, moved).starts_with(textOf(old, range)));
        }
    }
}

void writeFork(const AppleDouble& parsed, const ByteSource& old, const std::string& fork) {
    const Source source = std::make_shared<MemorySource>(asBytes(fork));
    const auto written = parsed.withResourceFork(source);
    if (!written.ok()) return;
    const auto again = AppleDouble::parse(*written);
    require(again.ok());
    require(textOf(*again->content(AppleDouble::resourceFork)) == fork);
    requireOthersKept(parsed, old, *again, **written);
    // Once there is a place for it, the same fork again changes nothing.
    const auto twice = again->withResourceFork(source);
    require(twice.ok());
    const auto third = AppleDouble::parse(*twice);
    require(third.ok() && textOf(*third->content(AppleDouble::resourceFork)) == fork);
}

void writeFinderInfo(const AppleDouble& parsed) {
    FinderInfoBytes info;
    info.fill(std::byte{0x5A});
    const auto written = parsed.withFinderInfo(info);
    if (!written.ok()) return;
    const auto again = AppleDouble::parse(*written);
    require(again.ok() && *again->finderInfoContent() == info);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto source = std::make_shared<MemorySource>(bytes);
    const auto parsed = AppleDouble::parse(source);
    if (!parsed.ok()) return 0;
    (void)parsed->finderInfoContent();
    (void)parsed->dates();
    for (const auto& entry : parsed->entries()) {
        require(entry.range.fits(size));
        (void)textOf(*parsed->content(entry.id));
    }
    writeFinderInfo(*parsed);
    const std::string own = textOf(*parsed->content(AppleDouble::resourceFork));
    for (const std::string& fork : {own, own + "longer", std::string("a fork"), std::string()}) {
        writeFork(*parsed, *source, fork);
    }
    const auto attributes = parsed->attributes();
    if (!attributes.ok()) return 0;
    for (const auto& attribute : *attributes) require(attribute.range.fits(size));
    return 0;
}
