// What encoding a run of bytes is in, judged by its first bytes.
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

UInt32 SniffTextEncoding(const unsigned char* bytes, UInt32 count) {
    const UInt32 systemEncoding = CFStringGetSystemEncoding();
    if (bytes == nullptr) return systemEncoding;
    if (count >= 3 && bytes[0] == 0xEF && bytes[1] == 0xBB && bytes[2] == 0xBF) {
        return kCFStringEncodingUTF8;
    }
    if (count < 2) return systemEncoding;
    if (bytes[0] == 0xFF && bytes[1] == 0xFE) return kCFStringEncodingUTF16LE;
    if (bytes[0] == 0xFE && bytes[1] == 0xFF) return kCFStringEncodingUTF16BE;
    if (bytes[0] == 0x00) return kCFStringEncodingUTF16BE;
    if (bytes[1] == 0x00) return kCFStringEncodingUTF16LE;
    return systemEncoding;
}

UInt32 SniffTextEncoding(const SHandle& handle) {
    const Handle h = handle.Get();
    if (h == nullptr) return SniffTextEncoding(nullptr, 0);
    return SniffTextEncoding(reinterpret_cast<const unsigned char*>(*h),
                             static_cast<UInt32>(GetHandleSize(h)));
}

UInt32 SniffTextEncoding(const std::string& bytes) {
    return SniffTextEncoding(reinterpret_cast<const unsigned char*>(bytes.data()),
                             static_cast<UInt32>(bytes.size()));
}

UInt32 SniffTextEncoding(const TCLString& units) {
    return SniffTextEncoding(reinterpret_cast<const unsigned char*>(units.data()),
                             static_cast<UInt32>(units.size() * sizeof(UniChar)));
}
