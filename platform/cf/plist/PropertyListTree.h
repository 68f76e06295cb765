// Making the values of property lists, and the limits that all forms share.
#pragma once

#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>

#include <string_view>
#include <vector>

#include "platform/base/ByteReader.h"

namespace osa::plist {

/// Levels of arrays and dictionaries inside each other.
inline constexpr int kMaxDepth = 512;
/// Key of the one entry of a dictionary that stands for a UID of a keyed archive.
inline constexpr std::string_view kUIDKey = "CF$UID";

/// An owned value; empty stands for what could not be read.
using Value = CFRef<CFTypeRef>;

class Maker {
  public:
    explicit Maker(CFPropertyListMutabilityOptions options)
        : mutableContainers_(options != kCFPropertyListImmutable),
          mutableLeaves_(options == kCFPropertyListMutableContainersAndLeaves) {}

    bool mutableContainers() const { return mutableContainers_; }
    bool mutableLeaves() const { return mutableLeaves_; }

    Value string(std::u16string_view units) const;
    Value macRomanString(ByteSpan bytes) const;
    Value data(ByteSpan bytes) const;
    Value array(const std::vector<Value>& values) const;
    /// Parallel keys and values; of equal keys the last one's value wins.
    Value dictionary(const std::vector<Value>& keys, const std::vector<Value>& values) const;
    Value uid(std::uint64_t number) const;

  private:
    Value leaf(CFStringRef string) const;

    bool mutableContainers_;
    bool mutableLeaves_;
};

Value integer(std::int64_t number);
Value unsignedInteger(std::uint64_t number);
Value real(double number);
Value date(double absoluteTime);
Value boolean(bool truth);

/// The values of an array; the keys and values of a dictionary.
std::vector<CFTypeRef> valuesOf(CFArrayRef array);
struct Entries {
    std::vector<CFTypeRef> keys;
    std::vector<CFTypeRef> values;
};
Entries entriesOf(CFDictionaryRef dictionary);
/// Whether it is a UID, and which.
bool isUID(CFDictionaryRef dictionary, std::uint64_t& number);

}  // namespace osa::plist
