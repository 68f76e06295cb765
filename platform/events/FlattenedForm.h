// The form of descriptors outside the process: docs/formats/flattened-descriptors.md.
#pragma once

#include <span>

#include "platform/events/ItemBlock.h"

namespace osa {

inline constexpr FourCharCode kFlattenedMagic = 'AEfd';
inline constexpr UInt16 kFlattenedVersion = 1;
inline constexpr UInt32 kFlattenedHeadSize = 16;

/// The head in front of the data.
struct FlattenedHead {
    DescType type;
    UInt32 size;
    bool isContainer;
};

/// errAECorruptData for what is no head, or one with less behind it than it says.
Result<FlattenedHead> readFlattenedHead(ByteSpan bytes);
void writeFlattenedHead(const FlattenedHead& head, std::byte* out);

// Both change the data of a descriptor in place, from one form to the other: the sizes are the
// same. Data that errAECorruptData was answered for are half changed. They throw std::bad_alloc.

OSStatus toFlattenedForm(DescType type, std::span<std::byte> data);
OSStatus fromFlattenedForm(const FlattenedHead& head, std::span<std::byte> data);

/// Whether data of that type are kept as a container's: those that have a block.
bool isFlattenedContainer(DescType type, ByteSpan data);

}  // namespace osa
