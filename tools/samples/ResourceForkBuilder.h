// Builds resource forks from readable parts.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteWriter.h"
#include "platform/base/FourCC.h"

namespace osa::samples {

class ResourceForkBuilder {
  public:
    /// Resources of a type should be added one after the other. A null name is no name.
    ResourceForkBuilder& add(FourCharCode type, int id, std::string_view data,
                             const char* name = nullptr, int attributes = 0) {
        if (types_.empty() || types_.back().code != type) types_.push_back({type, 0});
        ++types_.back().count;
        references_.u16(static_cast<std::uint16_t>(id));
        references_.u16(name == nullptr ? 0xFFFF : static_cast<std::uint16_t>(names_.size()));
        references_.u8(static_cast<std::uint8_t>(attributes))
            .u24(static_cast<std::uint32_t>(data_.size()));
        references_.u32(0xDEADBEEF);  // memory only, to be ignored
        if (name != nullptr) names_.pascalString(name);
        data_.u32(static_cast<std::uint32_t>(data.size())).text(data);
        return *this;
    }

    std::vector<std::byte> build() const {
        ByteWriter map;
        map.fill(22, 0xEE);  // header copy and memory-only fields are to be ignored
        map.u16(0);          // attributes
        const std::size_t typeList = 2 + 8 * types_.size();
        map.u16(28).u16(static_cast<std::uint16_t>(28 + typeList + references_.size()));
        map.u16(static_cast<std::uint16_t>(types_.size() - 1));
        std::size_t before = 0;
        for (const Type& type : types_) {
            map.fourCC(type.code).u16(static_cast<std::uint16_t>(type.count - 1));
            map.u16(static_cast<std::uint16_t>(typeList + 12 * before));
            before += type.count;
        }
        map.bytes(references_.view()).bytes(names_.view());

        const auto dataLength = static_cast<std::uint32_t>(data_.size());
        ByteWriter fork;
        fork.u32(256)
            .u32(256 + dataLength)
            .u32(dataLength)
            .u32(static_cast<std::uint32_t>(map.size()));
        fork.fill(240, 0xAA).bytes(data_.view()).bytes(map.view());
        return fork.take();
    }
    std::string text() const { return std::string(asText(build())); }

    /// Where the map begins in what build() gives.
    std::size_t mapStart() const { return 256 + data_.size(); }

  private:
    struct Type {
        FourCharCode code;
        std::size_t count;
    };
    std::vector<Type> types_;
    ByteWriter data_;
    ByteWriter references_;
    ByteWriter names_;
};

/// `fork` as the resource entry of AppleDouble, or with the other number of AppleSingle.
inline std::string wrappedFork(std::string_view fork, std::uint32_t magic = 0x00051607) {
    ByteWriter writer;
    writer.u32(magic).u32(0x00020000).fill(16).u16(1);
    writer.u32(2).u32(38).u32(static_cast<std::uint32_t>(fork.size())).text(fork);
    return writer.takeText();
}

}  // namespace osa::samples
