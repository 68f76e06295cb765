// Reads the non-keyed archive format: a stream of typed groups that describes itself down to the
// leaves, so that objects of unknown classes can be read through.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/ArchivedObjects.h"

namespace osa {

/// Failure is sticky: the first reason is kept and nothing more is read. Memory is bounded by the
/// archive's size: every object takes three bytes of it at least, and every value one.
class TypedStream {
  public:
    /// Containers inside containers, in the archive's bytes or in the objects made of them.
    static constexpr UInt32 kDeepest = 500;
    /// Sharing lets a small archive stand for any amount of objects; more than this is refused.
    static constexpr UInt64 kHeaviest = 64u << 20;

    /// Views `archive`, which must outlive the reader, and reads its header.
    explicit TypedStream(ByteSpan archive);

    bool ok() const { return ok_; }
    /// Why reading failed, for people.
    const std::string& reason() const { return reason_; }
    bool atEnd() const { return in_.atEnd(); }

    /// The next group, which must hold one object. Null when that is nil, failed, or of a class
    /// that has no place in a property list.
    CFRef<CFTypeRef> readRoot();
    /// Reads through the next group, whatever it holds.
    void readGroup();

  private:
    /// An item of the table that objects, classes and C strings share.
    struct Item {
        enum class Kind : UInt8 { object, archivedClass, unfinishedClass, text };
        Kind kind = Kind::object;
        ArchivedClass archivedClass = ArchivedClass::unknown;
        ByteSpan text;
        ConvertedObject converted;
    };
    struct OptionalText {
        bool present = false;
        ByteSpan bytes;
    };

    void fail(std::string_view reason);
    void refuse(std::string_view reason);
    bool good();
    bool spend(std::size_t steps);

    SInt64 integer(unsigned head, bool isSigned);
    SInt64 integer(bool isSigned) { return integer(in_.u8(), isSigned); }
    double real(std::size_t width);
    std::size_t reference(unsigned head);
    Item* item(unsigned head, Item::Kind kind);
    OptionalText unsharedText();
    OptionalText sharedText();
    OptionalText sharedText(unsigned head);
    ByteSpan cString();
    ArchivedClass readClass(bool& isNil);
    const ConvertedObject* readObject();
    void finish(Item& object, std::size_t firstValue);

    void readValues(std::string_view types);
    void readValue(std::string_view& types);
    void readScalar(char code);
    void readArray(std::string_view type);
    void readStruct(std::string_view type);
    void keep(const ArchivedValue& value);
    void keepInteger(char code, SInt64 value);
    void keepBytes(char code, ByteSpan bytes);

    ByteReader in_;
    bool littleEndian_ = false;
    bool ok_ = true;
    std::string reason_;
    UInt32 depth_ = 0;
    std::size_t budget_;
    std::vector<ByteSpan> strings_;
    std::deque<Item> items_;             // grows without moving: values point at its objects
    std::vector<ArchivedValue> values_;  // of the objects being read, innermost last
    ArchivedClass reading_ = ArchivedClass::unknown;  // class of the innermost
};

}  // namespace osa
