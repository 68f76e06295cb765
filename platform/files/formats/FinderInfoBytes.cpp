// Finder information between disk order and host order.
#include "platform/files/formats/FinderInfoBytes.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/base/ByteWriter.h"

namespace osa {
namespace {

Point readPoint(ByteReader& reader) {
    Point point;
    point.v = reader.s16();
    point.h = reader.s16();
    return point;
}

DInfo folderInfo(ByteReader reader) {
    DInfo info{};
    info.frRect.top = reader.s16();
    info.frRect.left = reader.s16();
    info.frRect.bottom = reader.s16();
    info.frRect.right = reader.s16();
    info.frFlags = reader.u16();
    info.frLocation = readPoint(reader);
    info.frView = reader.s16();
    return info;
}

DXInfo folderExtendedInfo(ByteReader reader) {
    DXInfo info{};
    info.frScroll = readPoint(reader);
    info.frOpenChain = reader.s32();
    info.frScript = reader.s8();
    info.frXFlags = reader.s8();
    info.frComment = reader.s16();
    info.frPutAway = reader.s32();
    return info;
}

std::uint16_t bits(SInt16 value) {
    return static_cast<std::uint16_t>(value);
}

void put(ByteWriter& writer, const DInfo& info) {
    writer.u16(bits(info.frRect.top)).u16(bits(info.frRect.left));
    writer.u16(bits(info.frRect.bottom)).u16(bits(info.frRect.right));
    writer.u16(info.frFlags).u16(bits(info.frLocation.v)).u16(bits(info.frLocation.h));
    writer.u16(bits(info.frView));
}

void put(ByteWriter& writer, const FInfo& info) {
    writer.fourCC(info.fdType).fourCC(info.fdCreator).u16(info.fdFlags);
    writer.u16(bits(info.fdLocation.v)).u16(bits(info.fdLocation.h)).u16(bits(info.fdFldr));
}

void put(ByteWriter& writer, const DXInfo& info) {
    writer.u16(bits(info.frScroll.v)).u16(bits(info.frScroll.h));
    writer.u32(static_cast<std::uint32_t>(info.frOpenChain));
    writer.u8(static_cast<std::uint8_t>(info.frScript));
    writer.u8(static_cast<std::uint8_t>(info.frXFlags));
    writer.u16(bits(info.frComment)).u32(static_cast<std::uint32_t>(info.frPutAway));
}

void put(ByteWriter& writer, const FXInfo& info) {
    writer.u16(bits(info.fdIconID));
    for (const SInt16 reserved : info.fdReserved) writer.u16(bits(reserved));
    writer.u8(static_cast<std::uint8_t>(info.fdScript));
    writer.u8(static_cast<std::uint8_t>(info.fdXFlags));
    writer.u16(bits(info.fdComment)).u32(static_cast<std::uint32_t>(info.fdPutAway));
}

/// `FolderInfo` is what the 16 bytes of a folder's `info` really hold.
template <typename FolderInfo, typename Info>
void putHalf(std::span<std::byte, 16> half, const Info& info, bool isFolder) {
    ByteWriter writer;
    if (isFolder) {
        put(writer, std::bit_cast<FolderInfo>(info));
    } else {
        put(writer, info);
    }
    std::copy_n(writer.view().begin(), half.size(), half.begin());
}

}  // namespace

FinderInfoBytes finderInfoBytes(ByteSpan stored) {
    FinderInfoBytes bytes{};
    std::copy_n(stored.begin(), std::min(stored.size(), bytes.size()), bytes.begin());
    return bytes;
}

bool isBlank(const FinderInfoBytes& bytes) {
    static constexpr FinderInfoBytes kBlank{};
    return std::memcmp(bytes.data(), kBlank.data(), kBlank.size()) == 0;
}

FinderInfo basicFinderInfo(const FinderInfoBytes& bytes, bool isFolder) {
    ByteReader reader(ByteSpan(bytes).first<16>());
    if (isFolder) return std::bit_cast<FinderInfo>(folderInfo(reader));
    FinderInfo info{};
    info.fdType = reader.fourCC();
    info.fdCreator = reader.fourCC();
    info.fdFlags = reader.u16();
    info.fdLocation = readPoint(reader);
    info.fdFldr = reader.s16();
    return info;
}

ExtendedFinderInfo extendedFinderInfo(const FinderInfoBytes& bytes, bool isFolder) {
    ByteReader reader(ByteSpan(bytes).last<16>());
    if (isFolder) return std::bit_cast<ExtendedFinderInfo>(folderExtendedInfo(reader));
    ExtendedFinderInfo info{};
    info.fdIconID = reader.s16();
    for (SInt16& reserved : info.fdReserved) reserved = reader.s16();
    info.fdScript = reader.s8();
    info.fdXFlags = reader.s8();
    info.fdComment = reader.s16();
    info.fdPutAway = reader.s32();
    return info;
}

void setBasicFinderInfo(FinderInfoBytes& bytes, const FinderInfo& info, bool isFolder) {
    putHalf<DInfo>(std::span(bytes).first<16>(), info, isFolder);
}

void setExtendedFinderInfo(FinderInfoBytes& bytes, const ExtendedFinderInfo& info, bool isFolder) {
    putHalf<DXInfo>(std::span(bytes).last<16>(), info, isFolder);
}

}  // namespace osa
