// Checking the header of a resource fork.
#include "platform/files/formats/BareFork.h"

namespace osa {
namespace {

constexpr std::uint64_t kForkHeader = 16;
constexpr std::uint64_t kMapHead = 28;

}  // namespace

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

Result<bool> isBareFork(const ByteSource& source) {
    if (source.size() == 0) return true;
    return isResourceFork(source);
}

}  // namespace osa
