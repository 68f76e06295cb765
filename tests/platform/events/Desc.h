// A descriptor that disposes of itself, and descriptors made in one line.
#pragma once

#include <CoreServices/AEDataModel.h>

#include "tests/support/Test.h"

namespace osa::test {

class Desc {
  public:
    Desc() = default;
    Desc(DescType type, const std::string& data) {
        EXPECT_EQ(AECreateDesc(type, data.data(), static_cast<Size>(data.size()), &desc_), 0);
    }
    explicit Desc(SInt32 number) : Desc(typeSInt32, std::string(bytesOf(number))) {}
    Desc(Desc&& other) noexcept : desc_(std::exchange(other.desc_, {typeNull, nullptr})) {}
    Desc& operator=(Desc&& other) noexcept {
        std::swap(desc_, other.desc_);
        return *this;
    }
    ~Desc() { AEDisposeDesc(&desc_); }

    static Desc list(bool isRecord = false) {
        Desc made;
        EXPECT_EQ(AECreateList(nullptr, 0, isRecord, made), 0);
        return made;
    }
    template <typename T>
    static std::string bytesOf(T value) {
        return std::string(reinterpret_cast<const char*>(&value), sizeof value);
    }

    operator AEDesc*() { return &desc_; }
    operator const AEDesc*() const { return &desc_; }
    const AEDesc* operator->() const { return &desc_; }

    std::string data() const {
        std::string bytes(static_cast<std::size_t>(AEGetDescDataSize(&desc_)), '\0');
        EXPECT_EQ(AEGetDescData(&desc_, bytes.data(), static_cast<Size>(bytes.size())), 0);
        return bytes;
    }
    SInt32 count() const {
        SInt32 count = -1;
        EXPECT_EQ(AECountItems(&desc_, &count), 0);
        return count;
    }
    Desc item(SInt32 index) const {
        Desc made;
        EXPECT_EQ(AEGetNthDesc(&desc_, index, typeWildCard, nullptr, made), 0);
        return made;
    }

  private:
    AEDesc desc_{typeNull, nullptr};
};

}  // namespace osa::test
