// Text forms of four-character codes.
#include "platform/base/FourCC.h"

#include <cstdio>

namespace osa {

std::string fourCCBytes(FourCharCode code) {
    std::string bytes(4, '\0');
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<char>(code >> (24 - 8 * i));
    return bytes;
}

std::string describeFourCC(FourCharCode code) {
    const std::string bytes = fourCCBytes(code);
    for (const char byte : bytes) {
        if (byte < 0x20 || byte > 0x7E) {
            char hex[11];
            std::snprintf(hex, sizeof hex, "0x%08X", code);
            return hex;
        }
    }
    return "'" + bytes + "'";
}

}  // namespace osa
