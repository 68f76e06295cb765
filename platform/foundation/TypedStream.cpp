// The stream's grammar. A head byte says what follows; integers are one byte where they can be.
//
//   stream  = version 0x04, length and signature, integer system version, group*
//   group   = shared string of type encodings, a value for each
//   object  = 0x85 nil | reference | 0x84 class group* 0x86
//   class   = 0x85 none | reference | 0x84 shared name, integer version, class (its parent)
//   shared  = 0x85 nil | reference | 0x84 integer length, bytes
//   integer = -110…127 | 0x81 16 bits | 0x82 32 bits;  real = 0x83 IEEE bytes | integer
//
// References count from 0x92 (-110). Strings have one table; objects, classes and C strings share
// another, in which an item has its place from its 0x84 on.
#include "platform/foundation/TypedStream.h"

#include <algorithm>
#include <bit>
#include <utility>

namespace osa {
namespace {

enum : unsigned {
    kHead16 = 0x81,
    kHead32 = 0x82,
    kHeadReal = 0x83,
    kHeadNew = 0x84,
    kHeadNil = 0x85,
    kHeadEnd = 0x86,
    kHeadFirstReference = 0x92,
};

constexpr unsigned kStreamVersion = 4;

/// Longer type encodings than any compiler writes; bounds the work that a two-byte group can ask
/// for.
constexpr std::size_t kLongestTypes = 4096;

/// The length of the type that begins at `types`, brackets matched; 0 when they do not match.
std::size_t typeLength(std::string_view types) {
    int depth = 0;
    for (std::size_t i = 0; i < types.size(); ++i) {
        if (types[i] == '[' || types[i] == '{') ++depth;
        if (types[i] == ']' || types[i] == '}') --depth;
        if (depth <= 0) return i + 1;
    }
    return 0;
}

}  // namespace

TypedStream::TypedStream(ByteSpan archive)
    : in_(archive), budget_(16 * archive.size() + kLongestTypes) {
    const unsigned version = in_.u8();
    const std::string_view signature = in_.pascalString();
    littleEndian_ = signature == "streamtyped";
    if (!in_.ok() || (!littleEndian_ && signature != "typedstream"))
        refuse("not an archive");
    else if (version != kStreamVersion)
        fail("archive of version " + std::to_string(version));
    integer(false);
}

void TypedStream::fail(std::string_view reason) {
    // Past the end everything reads as zeros, which then look wrong in many ways.
    refuse(in_.ok() ? reason : "archive ends early");
}

void TypedStream::refuse(std::string_view reason) {
    if (ok_) reason_ = std::string(reason) + " at byte " + std::to_string(in_.position());
    ok_ = false;
    in_.fail();
}

/// Whether reading may go on; turns bytes that ran out into a reason.
bool TypedStream::good() {
    if (ok_ && !in_.ok()) fail({});
    return ok_;
}

/// Every step of decoding is paid for from a purse in proportion to the archive.
bool TypedStream::spend(std::size_t steps) {
    if (steps > budget_) {
        fail("archive asks for too much work");
        return false;
    }
    budget_ -= steps;
    return good();
}

SInt64 TypedStream::integer(unsigned head, bool isSigned) {
    const auto wide = [&](std::size_t width) {
        return littleEndian_ ? in_.littleEndian(width) : in_.bigEndian(width);
    };
    if (head == kHead16) {
        const auto value = static_cast<UInt16>(wide(2));
        return isSigned ? SInt64{static_cast<SInt16>(value)} : SInt64{value};
    }
    if (head == kHead32) {
        const auto value = static_cast<UInt32>(wide(4));
        return isSigned ? SInt64{static_cast<SInt32>(value)} : SInt64{value};
    }
    if (head >= 0x80 && head < kHeadFirstReference) {
        fail("no integer where one is due");
        return 0;
    }
    return isSigned ? SInt64{static_cast<SInt8>(head)} : SInt64{head};
}

double TypedStream::real(std::size_t width) {
    const unsigned head = in_.u8();
    if (head != kHeadReal) return static_cast<double>(integer(head, true));
    const UInt64 bits = littleEndian_ ? in_.littleEndian(width) : in_.bigEndian(width);
    if (width == 4) return static_cast<double>(std::bit_cast<float>(static_cast<UInt32>(bits)));
    return std::bit_cast<double>(bits);
}

/// Out of any table when malformed, which every user tests anyway.
std::size_t TypedStream::reference(unsigned head) {
    const SInt64 index = integer(head, true) + 110;
    return index < 0 || !ok_ ? SIZE_MAX : static_cast<std::size_t>(index);
}

TypedStream::Item* TypedStream::item(unsigned head, Item::Kind kind) {
    const std::size_t index = reference(head);
    if (index < items_.size() && items_[index].kind == kind) return &items_[index];
    fail("reference to what is not there");
    return nullptr;
}

TypedStream::OptionalText TypedStream::unsharedText() {
    const unsigned head = in_.u8();
    if (head == kHeadNil) return {};
    const SInt64 length = integer(head, false);
    return {true, in_.bytes(static_cast<std::size_t>(length))};
}

TypedStream::OptionalText TypedStream::sharedText() {
    return sharedText(in_.u8());
}

TypedStream::OptionalText TypedStream::sharedText(unsigned head) {
    if (head == kHeadNil) return {};
    if (head == kHeadNew) {
        const OptionalText text = unsharedText();
        strings_.push_back(text.bytes);
        return text;
    }
    const std::size_t index = reference(head);
    if (index < strings_.size()) return {true, strings_[index]};
    fail("reference to a string that is not there");
    return {};
}

ByteSpan TypedStream::cString() {
    const unsigned head = in_.u8();
    if (head == kHeadNil) return {};
    if (head != kHeadNew) {
        const Item* const known = item(head, Item::Kind::text);
        return known == nullptr ? ByteSpan{} : known->text;
    }
    items_.push_back({Item::Kind::text, {}, {}, {}});
    return items_.back().text = sharedText().bytes;
}

ArchivedClass TypedStream::readClass(bool& isNil) {
    // Most derived first. Each class is known by its own name or else by its parent, which comes
    // last.
    std::vector<std::pair<Item*, ArchivedClass>> chain;
    ArchivedClass inherited = ArchivedClass::unknown;
    isNil = false;
    while (good()) {
        const unsigned head = in_.u8();
        if (head == kHeadNil) {
            isNil = chain.empty();
            break;
        }
        if (head != kHeadNew) {
            const Item* const known = item(head, Item::Kind::archivedClass);
            if (known != nullptr) inherited = known->archivedClass;
            break;
        }
        items_.push_back({Item::Kind::unfinishedClass, {}, {}, {}});
        Item* const entry = &items_.back();
        const ByteSpan name = sharedText().bytes;
        integer(true);
        chain.emplace_back(entry, archivedClassNamed(asText(name)));
    }
    for (auto link = chain.rbegin(); link != chain.rend(); ++link) {
        if (link->second != ArchivedClass::unknown) inherited = link->second;
        link->first->kind = Item::Kind::archivedClass;
        link->first->archivedClass = inherited;
    }
    return inherited;
}

const ConvertedObject* TypedStream::readObject() {
    const unsigned head = in_.u8();
    if (head == kHeadNil) return nullptr;
    if (head != kHeadNew) {
        const Item* const known = item(head, Item::Kind::object);
        return known == nullptr ? nullptr : &known->converted;
    }
    if (depth_ >= kDeepest) {
        fail("archive is nested too deeply");
        return nullptr;
    }
    ++depth_;
    items_.push_back({});
    Item& object = items_.back();
    bool isNil = false;
    object.archivedClass = readClass(isNil);
    if (isNil) fail("object without a class");

    const ArchivedClass outer = std::exchange(reading_, object.archivedClass);
    const std::size_t firstValue = values_.size();
    while (good() && in_.peek() != kHeadEnd) readGroup();
    in_.skip(1);
    if (good()) finish(object, firstValue);
    values_.resize(firstValue);
    reading_ = outer;
    --depth_;
    return &object.converted;
}

/// An object is converted as soon as it is complete, when all that it holds is: a container that
/// holds itself finds itself unfinished and leaves itself out.
void TypedStream::finish(Item& object, std::size_t firstValue) {
    auto converted = convertArchived(object.archivedClass, std::span(values_).subspan(firstValue));
    if (!converted) return fail("object with fewer elements than it counts");
    if (converted->height > kDeepest) return fail("objects are nested too deeply");
    if (converted->weight > kHeaviest) return fail("objects are too large");
    object.converted = *std::move(converted);
}

CFRef<CFTypeRef> TypedStream::readRoot() {
    const OptionalText types = sharedText();
    if (!good()) return {};
    if (asText(types.bytes) != "@") {
        fail("no root object");
        return {};
    }
    const ConvertedObject* const root = readObject();
    if (!good() || root == nullptr) return {};
    return root->object;
}

void TypedStream::readGroup() {
    const OptionalText types = sharedText();
    if (!good()) return;
    if (types.bytes.empty() || types.bytes.size() > kLongestTypes)
        return fail("group without a type");
    readValues(asText(types.bytes));
}

void TypedStream::readValues(std::string_view types) {
    while (!types.empty() && good()) readValue(types);
}

/// Reads a value of the first type in `types` and removes that type.
void TypedStream::readValue(std::string_view& types) {
    const std::size_t length = typeLength(types);
    if (!spend(1 + length / 32)) return;
    const std::string_view type = types.substr(0, length);
    types.remove_prefix(length);
    if (length == 0) return fail("malformed type");
    if (length == 1) return readScalar(type[0]);
    if (depth_ >= kDeepest) return fail("types are nested too deeply");
    ++depth_;
    const std::string_view inner = type.substr(1, length - 2);
    type[0] == '[' ? readArray(inner) : readStruct(inner);
    --depth_;
}

void TypedStream::readScalar(char code) {
    switch (code) {
        case 'c':
            return keepInteger(code, in_.s8());
        case 'C':
        case 'B':
            return keepInteger(code, in_.u8());
        case 's':
        case 'i':
        case 'l':
        case 'q':
            return keepInteger(code, integer(true));
        case 'S':
        case 'I':
        case 'L':
        case 'Q':
            return keepInteger(code, integer(false));
        case 'f':
        case 'd': {
            ArchivedValue value{ArchivedValue::Kind::real, code, {}, {}};
            value.real = real(code == 'f' ? 4 : 8);
            return keep(value);
        }
        case '*':
            return keepBytes(code, cString());
        case '%':
        case ':':
            return keepBytes(code, sharedText().bytes);
        case '+':
            return keepBytes(code, unsharedText().bytes);
        case '@': {
            // The object's own values are gone from the list before it joins it.
            ArchivedValue value{ArchivedValue::Kind::object, code, {}, {}};
            value.object = readObject();
            return keep(value);
        }
        case '#': {
            bool isNil = false;
            readClass(isNil);
            return keep({});
        }
        case '!':
            return;  // an integer that is not stored
        default:
            return fail("unknown type");
    }
}

/// `type` is a count and the type of every element.
void TypedStream::readArray(std::string_view type) {
    std::size_t count = 0;
    while (!type.empty() && type[0] >= '0' && type[0] <= '9') {
        count = count * 10 + static_cast<std::size_t>(type[0] - '0');
        type.remove_prefix(1);
        if (count > in_.remaining()) return fail("array longer than the archive");
    }
    if (type == "c" || type == "C") return keepBytes('[', in_.bytes(count));
    for (std::size_t i = 0; i < count && good(); ++i) readValues(type);
}

/// `type` is a name, an equals sign and the fields' types; sometimes the fields alone.
void TypedStream::readStruct(std::string_view type) {
    const std::size_t equals = type.find_first_of("=[{");
    if (equals != std::string_view::npos && type[equals] == '=') type.remove_prefix(equals + 1);
    readValues(type);
}

void TypedStream::keep(const ArchivedValue& value) {
    // Of a class that gives nothing to a property list the values are not wanted.
    if (depth_ > 0 && reading_ != ArchivedClass::unknown && good()) values_.push_back(value);
}

void TypedStream::keepInteger(char code, SInt64 integer) {
    ArchivedValue value{ArchivedValue::Kind::integer, code, {}, {}};
    value.integer = integer;
    keep(value);
}

void TypedStream::keepBytes(char code, ByteSpan bytes) {
    keep({ArchivedValue::Kind::bytes, code, {}, bytes});
}

}  // namespace osa
