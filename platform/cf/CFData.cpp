// CFData: immutable bytes in one block with the header, mutable ones in a vector.
#include <CoreFoundation/CFData.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "platform/base/ByteReader.h"
#include "platform/cf/CFRuntime.h"

struct __CFData : osa::CFObject {
    static const osa::ClassRecord kClass;
    __CFData(bool changeable, std::size_t size)
        : CFObject(kClass), length(static_cast<CFIndex>(size)), isMutable(changeable) {}

    UInt8* bytes = nullptr;
    CFIndex length;
    bool isMutable;

    osa::ByteSpan span() const {
        return std::as_bytes(std::span(bytes, static_cast<std::size_t>(length)));
    }
};

namespace {

struct MutableData : __CFData {
    MutableData() : __CFData(true, 0) { contentChanged(); }
    void contentChanged() {
        // data() of an empty vector may be null, which callers take for a failure.
        if (content.capacity() == 0) content.reserve(1);
        bytes = content.data();
        length = static_cast<CFIndex>(content.size());
    }
    std::vector<UInt8> content;
};

void finalizeData(osa::CFObject* object) {
    auto* const data = static_cast<__CFData*>(object);
    if (data->isMutable) {
        delete static_cast<MutableData*>(data);
    } else {
        data->~__CFData();
        ::operator delete(data);
    }
    osa::noteObjectGone();
}

bool equalData(const osa::CFObject* first, const osa::CFObject* second) {
    return std::ranges::equal(static_cast<const __CFData*>(first)->span(),
                              static_cast<const __CFData*>(second)->span());
}

CFHashCode hashData(const osa::CFObject* object) {
    return std::hash<std::string_view>{}(osa::asText(static_cast<const __CFData*>(object)->span()));
}

std::string describeData(const osa::CFObject* object) {
    static constexpr char kDigits[] = "0123456789abcdef";
    constexpr std::size_t kShown = 64;
    const osa::ByteSpan bytes = static_cast<const __CFData*>(object)->span();
    std::string text = "<";
    for (const std::byte byte : bytes.first(std::min(bytes.size(), kShown))) {
        text += kDigits[std::to_integer<unsigned>(byte) >> 4];
        text += kDigits[std::to_integer<unsigned>(byte) & 15];
    }
    return text + (bytes.size() > kShown ? "...>" : ">");
}

MutableData* asMutable(CFMutableDataRef data) {
    return data != nullptr && data->isMutable ? static_cast<MutableData*>(data) : nullptr;
}

}  // namespace

constinit const osa::ClassRecord __CFData::kClass{"CFData", finalizeData, equalData, hashData,
                                                  describeData};

CFTypeID CFDataGetTypeID() {
    return osa::typeIDOf(__CFData::kClass);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex length) {
    if (length < 0 || (bytes == nullptr && length > 0)) return nullptr;
    const auto size = static_cast<std::size_t>(length);
    void* const block = ::operator new(sizeof(__CFData) + size, std::nothrow);
    if (block == nullptr) return nullptr;
    auto* const data = new (block) __CFData(false, size);
    data->bytes = reinterpret_cast<UInt8*>(data + 1);
    if (size > 0) std::memcpy(data->bytes, bytes, size);
    osa::noteObjectMade();
    return data;
}

CFDataRef CFDataCreateCopy(CFAllocatorRef allocator, CFDataRef data) {
    if (data == nullptr) return nullptr;
    if (data->isMutable) return CFDataCreate(allocator, data->bytes, data->length);
    return static_cast<CFDataRef>(CFRetain(data));
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex) {
    return osa::makeObject<MutableData>();
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef allocator, CFIndex capacity,
                                         CFDataRef data) {
    if (data == nullptr) return nullptr;
    const CFMutableDataRef copy = CFDataCreateMutable(allocator, capacity);
    if (copy != nullptr) CFDataAppendBytes(copy, data->bytes, data->length);
    return copy;
}

CFIndex CFDataGetLength(CFDataRef data) {
    return data == nullptr ? 0 : data->length;
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return data == nullptr ? nullptr : data->bytes;
}

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8* buffer) {
    if (data == nullptr || range.location < 0 || range.location > data->length) return;
    const CFIndex count = std::min(range.length, data->length - range.location);
    if (count > 0)
        std::memcpy(buffer, data->bytes + range.location, static_cast<std::size_t>(count));
}

UInt8* CFDataGetMutableBytePtr(CFMutableDataRef data) {
    return asMutable(data) == nullptr ? nullptr : data->bytes;
}

void CFDataSetLength(CFMutableDataRef data, CFIndex length) {
    MutableData* const target = asMutable(data);
    if (target == nullptr || length < 0) return;
    try {
        target->content.resize(static_cast<std::size_t>(length));
    } catch (const std::exception&) {
        return;
    }
    target->contentChanged();
}

void CFDataAppendBytes(CFMutableDataRef data, const UInt8* bytes, CFIndex length) {
    CFDataReplaceBytes(data, CFRangeMake(CFDataGetLength(data), 0), bytes, length);
}

void CFDataReplaceBytes(CFMutableDataRef data, CFRange range, const UInt8* bytes, CFIndex length) {
    MutableData* const target = asMutable(data);
    if (target == nullptr || length < 0 || range.location < 0 || range.location > target->length)
        return;
    const CFIndex removed = std::clamp<CFIndex>(range.length, 0, target->length - range.location);
    try {
        auto& content = target->content;
        const auto start = content.begin() + range.location;
        const auto behind = content.erase(start, start + removed);
        content.insert(behind, bytes, bytes + length);
    } catch (const std::exception&) {
    }
    target->contentChanged();
}

void CFDataDeleteBytes(CFMutableDataRef data, CFRange range) {
    CFDataReplaceBytes(data, range, nullptr, 0);
}
