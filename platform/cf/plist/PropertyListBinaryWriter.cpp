// Writes binary property lists; PropertyListBinary.cpp describes the form.
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFNumber.h>

#include <bit>
#include <unordered_map>

#include "platform/base/ByteWriter.h"
#include "platform/cf/NumberObject.h"
#include "platform/cf/StringObject.h"
#include "platform/cf/plist/PropertyListForms.h"
#include "platform/text/TextConverter.h"

namespace osa::plist {

namespace {

/// Bytes that hold every number up to `largest`: 1, 2, 4 or 8.
std::size_t widthFor(std::uint64_t largest) {
    return largest <= 0xFF ? 1 : largest <= 0xFFFF ? 2 : largest <= 0xFFFFFFFF ? 4 : 8;
}

bool isContainer(CFTypeRef value) {
    const CFTypeID type = CFGetTypeID(value);
    return type == CFArrayGetTypeID() || type == CFDictionaryGetTypeID();
}

bool isRealNumber(CFTypeRef value) {
    const auto* const number = cfCast<__CFNumber>(value);
    return number != nullptr && number->isReal();
}

/// Equal scalars are one object, but 1 and 1.0 are two.
struct SameScalar {
    bool operator()(CFTypeRef a, CFTypeRef b) const {
        return CFEqual(a, b) && isRealNumber(a) == isRealNumber(b);
    }
};

class BinaryWriter {
  public:
    bool add(CFTypeRef value, int depth, std::uint64_t& number);
    bool write(std::string& out);

  private:
    struct Object {
        CFTypeRef value;
        std::vector<std::uint64_t> references;
    };

    bool addParts(CFTypeRef value, int depth, std::vector<std::uint64_t>& references);
    bool writeObject(const Object& object);
    void writeNumber(const __CFNumber& number);
    void writeInteger(std::uint64_t value);
    void writeString(const __CFString& string);
    void writeMarker(unsigned kind, std::uint64_t count);

    ByteWriter writer_;
    std::vector<Object> objects_;
    std::unordered_map<CFTypeRef, std::uint64_t, CFHashCode (*)(CFTypeRef), SameScalar> scalars_{
        0, CFHash};
    std::size_t referenceSize_ = 1;
};

bool BinaryWriter::add(CFTypeRef value, int depth, std::uint64_t& number) {
    if (value == nullptr || depth > kMaxDepth) return false;
    number = objects_.size();
    if (!isContainer(value)) {
        const auto [place, isNew] = scalars_.emplace(value, number);
        number = place->second;
        if (isNew) objects_.push_back({value, {}});
        return true;
    }
    objects_.push_back({value, {}});
    std::vector<std::uint64_t> references;
    if (!addParts(value, depth, references)) return false;
    objects_[static_cast<std::size_t>(number)].references = std::move(references);
    return true;
}

bool BinaryWriter::addParts(CFTypeRef value, int depth, std::vector<std::uint64_t>& references) {
    std::uint64_t uid = 0;
    const auto addAll = [&](const std::vector<CFTypeRef>& parts) {
        for (const CFTypeRef part : parts) {
            references.emplace_back();
            std::uint64_t number = 0;
            if (!add(part, depth + 1, number)) return false;
            references.back() = number;
        }
        return true;
    };
    if (CFGetTypeID(value) == CFArrayGetTypeID())
        return addAll(valuesOf(static_cast<CFArrayRef>(value)));
    const auto dictionary = static_cast<CFDictionaryRef>(value);
    if (isUID(dictionary, uid)) return true;
    const Entries entries = entriesOf(dictionary);
    for (const CFTypeRef key : entries.keys)
        if (cfCast<__CFString>(key) == nullptr) return false;
    return addAll(entries.keys) && addAll(entries.values);
}

void BinaryWriter::writeMarker(unsigned kind, std::uint64_t count) {
    writer_.u8(static_cast<std::uint8_t>(kind << 4 | (count < 15 ? count : 15)));
    if (count >= 15) writeInteger(count);
}

void BinaryWriter::writeInteger(std::uint64_t value) {
    const std::size_t width = widthFor(value);
    writer_.u8(static_cast<std::uint8_t>(0x10 | std::countr_zero(width)));
    writer_.bigEndian(value, width);
}

void BinaryWriter::writeNumber(const __CFNumber& number) {
    if (number.type_ == kCFNumberFloat32Type) {
        writer_.u8(0x22).u32(std::bit_cast<std::uint32_t>(static_cast<float>(number.real)));
    } else if (number.isReal()) {
        writer_.u8(0x23).u64(std::bit_cast<std::uint64_t>(number.real));
    } else if (number.isHugeUnsigned) {
        writer_.u8(0x14).u64(0).u64(static_cast<std::uint64_t>(number.integer));
    } else {
        // Negative ones are seen as large and get eight bytes, which are signed.
        writeInteger(static_cast<std::uint64_t>(number.integer));
    }
}

void BinaryWriter::writeString(const __CFString& string) {
    const std::u16string units = unitsOf(&string);
    std::string bytes;
    if (encodeText(units, kTextEncodingASCII, 0, bytes) == units.size()) {
        writeMarker(0x5, units.size());
    } else {
        bytes.clear();
        encodeText(units, kTextEncodingUTF16BE, 0, bytes);
        writeMarker(0x6, units.size());
    }
    writer_.text(bytes);
}

bool BinaryWriter::writeObject(const Object& object) {
    const CFTypeID type = CFGetTypeID(object.value);
    std::uint64_t uid = 0;
    if (const auto* const string = cfCast<__CFString>(object.value)) {
        writeString(*string);
    } else if (const auto* const number = cfCast<__CFNumber>(object.value)) {
        writeNumber(*number);
    } else if (type == CFBooleanGetTypeID()) {
        writer_.u8(CFBooleanGetValue(static_cast<CFBooleanRef>(object.value)) ? 0x09 : 0x08);
    } else if (type == CFNullGetTypeID()) {
        writer_.u8(0x00);
    } else if (type == CFDateGetTypeID()) {
        const double time = CFDateGetAbsoluteTime(static_cast<CFDateRef>(object.value));
        writer_.u8(0x33).u64(std::bit_cast<std::uint64_t>(time));
    } else if (type == CFDataGetTypeID()) {
        const auto data = static_cast<CFDataRef>(object.value);
        const auto size = static_cast<std::size_t>(CFDataGetLength(data));
        writeMarker(0x4, size);
        writer_.bytes({reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data)), size});
    } else if (type == CFArrayGetTypeID()) {
        writeMarker(0xA, object.references.size());
    } else if (type != CFDictionaryGetTypeID()) {
        return false;
    } else if (isUID(static_cast<CFDictionaryRef>(object.value), uid)) {
        writer_.u8(static_cast<std::uint8_t>(0x80 | (widthFor(uid) - 1)))
            .bigEndian(uid, widthFor(uid));
    } else {
        writeMarker(0xD, object.references.size() / 2);
    }
    for (const std::uint64_t reference : object.references)
        writer_.bigEndian(reference, referenceSize_);
    return true;
}

bool BinaryWriter::write(std::string& out) {
    referenceSize_ = widthFor(objects_.size());
    writer_.text("bplist00");
    std::vector<std::uint64_t> offsets;
    for (const Object& object : objects_) {
        offsets.push_back(writer_.size());
        if (!writeObject(object)) return false;
    }
    const std::uint64_t table = writer_.size();
    const std::size_t offsetSize = widthFor(table);
    for (const std::uint64_t offset : offsets) writer_.bigEndian(offset, offsetSize);
    writer_.fill(6).u8(static_cast<std::uint8_t>(offsetSize));
    writer_.u8(static_cast<std::uint8_t>(referenceSize_));
    writer_.u64(objects_.size()).u64(0).u64(table);
    out = writer_.takeText();
    return true;
}

}  // namespace

bool writeBinary(CFTypeRef list, std::string& out) {
    BinaryWriter writer;
    std::uint64_t top = 0;
    return writer.add(list, 1, top) && writer.write(out);
}

}  // namespace osa::plist
