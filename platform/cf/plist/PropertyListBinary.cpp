// Reads binary property lists.
//
//   "bplist0?"  objects  offset table  trailer (32 bytes at the very end)
//
//   trailer  0  6 bytes  unused, sort version
//            6  u8       bytes of an offset in the table
//            7  u8       bytes of a reference to an object
//            8  u64      number of objects
//           16  u64      number of the top object
//           24  u64      offset of the table
//
// An object is a marker byte, kind in the high and size in the low four bits, and its content. Size
// 15 says that an integer object with the size follows. All numbers are big-endian.
#include <bit>
#include <vector>

#include "platform/cf/StringObject.h"
#include "platform/cf/plist/PropertyListForms.h"
#include "platform/text/TextConverter.h"

namespace osa::plist {

namespace {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;
/// How many more values than objects a list may have: objects may be referred to many times, and a
/// few hundred bytes could otherwise stand for more values than there is memory.
constexpr std::uint64_t kMaxRepeatedValues = 1000000;
/// Bytes of a copied leaf that count as one value.
constexpr std::uint64_t kBytesPerValue = 64;

struct Trailer {
    std::size_t offsetSize = 0;
    std::size_t referenceSize = 0;
    std::uint64_t objectCount = 0;
    std::uint64_t topObject = 0;
    std::uint64_t tableOffset = 0;
};

/// Checks everything that later reading relies on.
bool readTrailer(ByteSpan bytes, Trailer& trailer) {
    if (bytes.size() < kHeaderSize + kTrailerSize + 1) return false;
    ByteReader reader(bytes.last(kTrailerSize));
    reader.skip(6);
    trailer.offsetSize = reader.u8();
    trailer.referenceSize = reader.u8();
    trailer.objectCount = reader.u64();
    trailer.topObject = reader.u64();
    trailer.tableOffset = reader.u64();
    if (trailer.offsetSize < 1 || trailer.offsetSize > 8) return false;
    if (trailer.referenceSize < 1 || trailer.referenceSize > 8) return false;
    const std::uint64_t tableEnd = bytes.size() - kTrailerSize;
    if (trailer.tableOffset <= kHeaderSize || trailer.tableOffset > tableEnd) return false;
    return trailer.topObject < trailer.objectCount &&
           trailer.objectCount <= (tableEnd - trailer.tableOffset) / trailer.offsetSize;
}

class BinaryParser {
  public:
    BinaryParser(ByteSpan bytes, const Trailer& trailer, const Maker& maker)
        : objects_(bytes.first(static_cast<std::size_t>(trailer.tableOffset))),
          table_(bytes.subspan(static_cast<std::size_t>(trailer.tableOffset))),
          trailer_(trailer),
          maker_(maker),
          memory_(static_cast<std::size_t>(trailer.objectCount)),
          valuesLeft_(trailer.objectCount + kMaxRepeatedValues) {}

    Value object(std::uint64_t number, int depth);

  private:
    /// What is known of an object: its value when it can be shared, and how many values it stands
    /// for.
    struct Known {
        Value value;
        std::uint64_t weight = 0;
        bool beingRead = false;
    };

    Value parse(ByteReader& reader, int depth);
    Value simple(unsigned size) const;
    Value number(ByteReader& reader, unsigned sizeBits) const;
    Value realNumber(ByteReader& reader, unsigned sizeBits) const;
    Value array(ByteReader& reader, std::uint64_t count, int depth);
    Value dictionary(ByteReader& reader, std::uint64_t count, int depth);
    bool references(ByteReader& reader, std::uint64_t count, int depth, std::vector<Value>& values);
    Value string(ByteReader& reader, std::uint64_t count, UInt32 encoding) const;
    bool readCount(ByteReader& reader, unsigned size, std::uint64_t& count) const;
    bool spend(std::uint64_t values);

    ByteSpan objects_;
    ByteSpan table_;
    Trailer trailer_;
    const Maker& maker_;
    std::vector<Known> memory_;
    std::uint64_t valuesLeft_;
};

bool BinaryParser::spend(std::uint64_t values) {
    if (values > valuesLeft_) return false;
    valuesLeft_ -= values;
    return true;
}

Value BinaryParser::object(std::uint64_t number, int depth) {
    if (number >= trailer_.objectCount || depth > kMaxDepth) return {};
    Known& known = memory_[static_cast<std::size_t>(number)];
    if (known.beingRead) return {};
    if (known.value) return spend(known.weight) ? known.value : Value();
    ByteReader table(table_);
    table.seek(static_cast<std::size_t>(number) * trailer_.offsetSize);
    const std::uint64_t offset = table.bigEndian(trailer_.offsetSize);
    if (!table.ok() || offset < kHeaderSize || offset >= objects_.size() || !spend(1)) return {};
    const std::uint64_t before = valuesLeft_ + 1;
    ByteReader reader(objects_);
    reader.seek(static_cast<std::size_t>(offset));
    const bool isContainer = (reader.peek() >> 4) >= 0xA || (reader.peek() >> 4) == 0x8;
    known.beingRead = true;
    const Value value = parse(reader, depth);
    known.beingRead = false;
    const bool repeatedCopy = known.weight > 0 && !isContainer;
    const std::uint64_t size = reader.position() - offset;
    if (repeatedCopy && !spend(size / kBytesPerValue)) return {};
    known.weight = before - valuesLeft_;
    if (isContainer ? !maker_.mutableContainers() : !maker_.mutableLeaves()) known.value = value;
    return value;
}

Value BinaryParser::simple(unsigned size) const {
    switch (size) {
        case 0x0:
            return Value::Retain(kCFNull);
        case 0x8:
            return boolean(false);
        case 0x9:
            return boolean(true);
        default:
            return {};
    }
}

/// One, two and four bytes are unsigned, eight signed; sixteen hold what eight do, or an unsigned
/// one.
Value BinaryParser::number(ByteReader& reader, unsigned sizeBits) const {
    if (sizeBits > 4) return {};
    const std::uint64_t high = sizeBits == 4 ? reader.u64() : 0;
    const std::uint64_t low = reader.bigEndian(sizeBits < 3 ? std::size_t{1} << sizeBits : 8);
    if (!reader.ok()) return {};
    const auto asSigned = static_cast<std::int64_t>(low);
    if (sizeBits < 3 || (sizeBits == 4 && high == 0)) return unsignedInteger(low);
    if (sizeBits == 4 && (high != UINT64_MAX || asSigned >= 0)) return {};
    return integer(asSigned);
}

Value BinaryParser::realNumber(ByteReader& reader, unsigned sizeBits) const {
    if (sizeBits == 2) {
        const float single = std::bit_cast<float>(reader.u32());
        return reader.ok() ? real(single) : Value();
    }
    if (sizeBits != 3) return {};
    const double number = std::bit_cast<double>(reader.u64());
    return reader.ok() ? real(number) : Value();
}

bool BinaryParser::readCount(ByteReader& reader, unsigned size, std::uint64_t& count) const {
    count = size;
    if (size < 15) return true;
    const unsigned marker = reader.u8();
    if (marker >> 4 != 1 || (marker & 15) > 3) return false;
    count = reader.bigEndian(std::size_t{1} << (marker & 15));
    return reader.ok();
}

Value BinaryParser::string(ByteReader& reader, std::uint64_t count, UInt32 encoding) const {
    const unsigned unitSize = encoding == kTextEncodingUTF16BE ? 2 : 1;
    if (count > reader.remaining() / unitSize) return {};
    const ByteSpan bytes = reader.bytes(static_cast<std::size_t>(count) * unitSize);
    if (encoding == kTextEncodingMacRoman) return maker_.macRomanString(bytes);
    std::u16string units;
    return decodeText(bytes, encoding, units) ? maker_.string(units) : Value();
}

bool BinaryParser::references(ByteReader& reader, std::uint64_t count, int depth,
                              std::vector<Value>& values) {
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::uint64_t number = reader.bigEndian(trailer_.referenceSize);
        if (!reader.ok()) return false;
        Value value = object(number, depth + 1);
        if (!value) return false;
        values.push_back(std::move(value));
    }
    return true;
}

Value BinaryParser::array(ByteReader& reader, std::uint64_t count, int depth) {
    if (count > reader.remaining() / trailer_.referenceSize) return {};
    std::vector<Value> values;
    return references(reader, count, depth, values) ? maker_.array(values) : Value();
}

Value BinaryParser::dictionary(ByteReader& reader, std::uint64_t count, int depth) {
    if (count > reader.remaining() / trailer_.referenceSize / 2) return {};
    std::vector<Value> keys;
    std::vector<Value> values;
    if (!references(reader, count, depth, keys)) return {};
    for (const Value& key : keys)
        if (cfCast<__CFString>(key.get()) == nullptr) return {};
    return references(reader, count, depth, values) ? maker_.dictionary(keys, values) : Value();
}

Value BinaryParser::parse(ByteReader& reader, int depth) {
    const unsigned marker = reader.u8();
    const unsigned size = marker & 15;
    switch (marker >> 4) {
        case 0x0:
            return simple(size);
        case 0x1:
            return number(reader, size);
        case 0x2:
            return realNumber(reader, size);
        case 0x3: {
            const double time = std::bit_cast<double>(reader.u64());
            return size == 3 && reader.ok() ? date(time) : Value();
        }
        case 0x8: {
            const std::uint64_t uid = reader.bigEndian(size < 8 ? size + 1 : 0);
            return size < 8 && reader.ok() ? maker_.uid(uid) : Value();
        }
        default:
            break;
    }
    std::uint64_t count = 0;
    if (!readCount(reader, size, count)) return {};
    switch (marker >> 4) {
        case 0x4:
            if (count > reader.remaining()) return {};
            return maker_.data(reader.bytes(static_cast<std::size_t>(count)));
        // Meant for ASCII; bytes beyond it come from writers of the classic system.
        case 0x5:
            return string(reader, count, kTextEncodingMacRoman);
        case 0x6:
            return string(reader, count, kTextEncodingUTF16BE);
        case 0x7:
            return string(reader, count, kTextEncodingUTF8);
        case 0xA:
        case 0xB:  // sets, ordered and not, are given as arrays
        case 0xC:
            return array(reader, count, depth);
        case 0xD:
            return dictionary(reader, count, depth);
        default:
            return {};
    }
}

}  // namespace

bool isBinary(ByteSpan bytes) {
    return asText(bytes).starts_with("bplist");
}

Value readBinary(ByteSpan bytes, const Maker& maker) {
    Trailer trailer;
    if (!asText(bytes).starts_with("bplist0") || !readTrailer(bytes, trailer)) return {};
    return BinaryParser(bytes, trailer, maker).object(trailer.topObject, 1);
}

}  // namespace osa::plist
