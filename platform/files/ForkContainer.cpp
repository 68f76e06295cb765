// Trying the formats, the surest first.
#include "platform/files/ForkContainer.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/formats/BareFork.h"
#include "platform/files/formats/MacBinary.h"

namespace osa {
namespace {

std::shared_ptr<const ByteSource> part(const std::shared_ptr<const ByteSource>& whole,
                                       CheckedRange range) {
    return std::make_shared<SubSource>(whole, range);
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
