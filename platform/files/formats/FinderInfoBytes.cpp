// Finder information from disk order to host order.
#include "platform/files/formats/FinderInfoBytes.h"

#include <algorithm>
#include <bit>
#include <cstring>

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

}  // namespace osa
