// Trying the formats, the surest first.
#include "platform/files/ForkContainer.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/formats/MacBinary.h"

namespace osa {
namespace {

constexpr std::uint64_t kForkHeader = 16;
constexpr std::uint64_t kMapHead = 28;

std::shared_ptr<const ByteSource> part(const std::shared_ptr<const ByteSource>& whole,
                                       CheckedRange range) {
    return std::make_shared<SubSource>(whole, range);
}

/// Whether header and map head of a resource fork are where they should be. Its maker leaves no
/// magic number, so every offset has to agree.
Result<bool> isResourceFork(const ByteSource& source) {
    if (source.size() < kForkHeader + kMapHead) return false;
    OSA_TRY(const auto header, readRange(source, {0, kForkHeader}));
    ByteReader reader(header);
    const std::uint32_t dataStart = reader.u32();
    const std::uint32_t mapStart = reader.u32();
    const CheckedRange data{dataStart, reader.u32()};
    const CheckedRange map{mapStart, reader.u32()};
    if (dataStart < kForkHeader || mapStart < kForkHeader || map.length < kMapHead) return false;
    if (!data.fits(source.size()) || !map.fits(source.size())) return false;
    const bool areApart = data.length == 0 || dataStart + data.length <= mapStart ||
                          mapStart + map.length <= dataStart;
    if (!areApart) return false;
    OSA_TRY(const auto mapHead, readRange(source, {map.offset, kMapHead}));
    ByteReader head(mapHead);
    head.seek(24);
    const std::uint16_t typeList = head.u16();
    const std::uint16_t nameList = head.u16();
    return typeList >= kMapHead && typeList <= map.length && nameList <= map.length;
}

Result<ForkContainer> fromAppleDouble(const AppleDouble& parsed) {
    ForkContainer container;
    const bool isSingle = parsed.kind() == AppleDouble::Kind::appleSingle;
    container.kind = isSingle ? ForkContainer::Kind::appleSingle : ForkContainer::Kind::appleDouble;
    container.dataFork = parsed.content(AppleDouble::dataFork);
    container.resourceFork = parsed.content(AppleDouble::resourceFork);
    OSA_TRY(container.finderInfo, parsed.finderInfoContent());
    const auto name = parsed.content(AppleDouble::realName);
    if (name->size() <= 255) {
        OSA_TRY(const auto bytes, readRange(*name, {0, name->size()}));
        container.name = asText(bytes);
    }
    return container;
}

ForkContainer fromMacBinary(const std::shared_ptr<const ByteSource>& source,
                            const MacBinaryHeader& header) {
    ForkContainer container;
    container.kind = ForkContainer::Kind::macBinary;
    container.generation = header.generation;
    container.name = header.name;
    container.dataFork = part(source, header.dataFork);
    container.resourceFork = part(source, header.resourceFork);
    container.finderInfo = header.finderInfo;
    return container;
}

}  // namespace

Result<ForkContainer> openForkContainer(std::shared_ptr<const ByteSource> source) {
    const auto apple = AppleDouble::parse(source);
    if (apple.ok()) return fromAppleDouble(*apple);
    if (apple.status() != paramErr) return Failure(apple.status());

    OSA_TRY(const auto head, readRange(*source, CheckedRange{0, 128}.clamped(source->size())));
    const auto macBinary = parseMacBinary(head, source->size());
    if (macBinary) return fromMacBinary(source, *macBinary);

    ForkContainer container;
    OSA_TRY(const bool isFork, isResourceFork(*source));
    container.kind = isFork ? ForkContainer::Kind::resourceFork : ForkContainer::Kind::plain;
    container.dataFork = isFork ? part(source, {}) : source;
    container.resourceFork = isFork ? source : part(source, {});
    return container;
}

}  // namespace osa
