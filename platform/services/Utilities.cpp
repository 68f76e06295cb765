// Small published utilities: ticks, numbers as text, the search service's attribute keys.
#include <CoreServices/MacTypes.h>
#include <CoreServices/TextUtils.h>
#include <Metadata/MDImporter.h>

#include <charconv>
#include <chrono>

#include "platform/cf/StringObject.h"

OSA_CONSTANT_STRING(kMDItemDescription, "kMDItemDescription");
OSA_CONSTANT_STRING(kMDItemTextContent, "kMDItemTextContent");

UInt32 TickCount(void) {
    using Ticks = std::chrono::duration<std::int64_t, std::ratio<1, 60>>;
    const auto sinceStart = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<UInt32>(std::chrono::duration_cast<Ticks>(sinceStart).count());
}

void NumToString(SInt32 number, Str255 text) {
    char* const digits = reinterpret_cast<char*>(text) + 1;
    const auto result = std::to_chars(digits, digits + 254, number);
    text[0] = static_cast<unsigned char>(result.ptr - digits);
}
