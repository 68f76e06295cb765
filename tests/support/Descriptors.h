// Descriptors for tests: made in one expression, their content and statuses compared as text.
#pragma once

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "tests/support/Library.h"

namespace osa::test {

inline CAEDesc descOf(DescType type, std::string_view bytes) {
    CAEDesc desc;
    desc.Set(type, bytes.data(), static_cast<SInt32>(bytes.size()));
    return desc;
}

template <typename T>
CAEDesc descOf(DescType type, const T& value) requires std::is_trivially_copyable_v<T> &&
    (!std::is_convertible_v<T, std::string_view>) {
    return descOf(type, std::string_view(reinterpret_cast<const char*>(&value), sizeof value));
}

inline std::string dataOf(const CAEDescReader& desc) {
    std::string data(static_cast<std::size_t>(AEGetDescDataSize(&desc.GetDesc())), '\0');
    desc.GetData(data.data(), static_cast<SInt32>(data.size()));
    return data;
}

inline CAEDesc listOf(std::initializer_list<CAEDesc> items) {
    CAEDesc list;
    list.MakeList();
    for (const CAEDesc& item : items) list.AppendItem(item);
    return list;
}

/// What `get` answers, or "E" and the status that it throws.
template <typename Get>
std::string outcome(Get get) {
    try {
        return get();
    } catch (OSStatus status) {
        return "E" + std::to_string(status);
    }
}

}  // namespace osa::test
