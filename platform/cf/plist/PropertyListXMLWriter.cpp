// Writes XML property lists.
#include <CoreFoundation/CFDate.h>
#include <CoreFoundation/CFNumber.h>

#include "platform/cf/Calendar.h"
#include "platform/cf/NumberObject.h"
#include "platform/cf/StringObject.h"
#include "platform/cf/plist/PropertyListForms.h"
#include "platform/text/UnicodeForms.h"

namespace osa::plist {

namespace {

constexpr std::string_view kHead =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
/// Bytes that make a line of base64.
constexpr std::size_t kBytesPerLine = 48;

/// Characters that XML 1.0 has no way to write.
bool isForbidden(char32_t c) {
    return (c < 0x20 && c != '\t' && c != '\n' && c != '\r') || isSurrogate(c) || c == 0xFFFE ||
           c == 0xFFFF;
}

void appendEscaped(const __CFString& string, std::string& out) {
    const std::u16string units = unitsOf(&string);
    for (std::size_t i = 0; i < units.size();) {
        const Character character = characterAt(units, i);
        i += character.length;
        switch (character.value) {
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '&':
                out += "&amp;";
                break;
            // As itself it would be read as LF.
            case '\r':
                out += "&#13;";
                break;
            default:
                appendUTF8(isForbidden(character.value) ? 0xFFFD : character.value, out);
        }
    }
}

void appendBase64(ByteSpan bytes, std::string& out) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t count = bytes.size() - i < 3 ? bytes.size() - i : 3;
        unsigned group = 0;
        for (std::size_t j = 0; j < 3; ++j)
            group = group << 8 | (j < count ? std::to_integer<unsigned>(bytes[i + j]) : 0);
        for (std::size_t j = 0; j < 4; ++j)
            out += j <= count ? kDigits[group >> (18 - 6 * j) & 63] : '=';
    }
}

class XMLWriter {
  public:
    explicit XMLWriter(std::string& out) : out_(out) {}

    bool write(CFTypeRef value, int depth);

  private:
    void indent(int depth) { out_.append(static_cast<std::size_t>(depth - 1), '\t'); }
    void element(std::string_view name, std::string_view text);
    void data(CFDataRef value, int depth);
    bool array(CFArrayRef value, int depth);
    bool dictionary(CFDictionaryRef value, int depth);

    std::string& out_;
};

void XMLWriter::element(std::string_view name, std::string_view text) {
    out_.append("<").append(name).append(">").append(text).append("</").append(name).append(">\n");
}

void XMLWriter::data(CFDataRef value, int depth) {
    const ByteSpan bytes(reinterpret_cast<const std::byte*>(CFDataGetBytePtr(value)),
                         static_cast<std::size_t>(CFDataGetLength(value)));
    out_ += "<data>\n";
    for (std::size_t i = 0; i < bytes.size(); i += kBytesPerLine) {
        indent(depth);
        appendBase64(bytes.subspan(i, std::min(kBytesPerLine, bytes.size() - i)), out_);
        out_ += '\n';
    }
    indent(depth);
    out_ += "</data>\n";
}

bool XMLWriter::array(CFArrayRef value, int depth) {
    if (CFArrayGetCount(value) == 0) {
        out_ += "<array/>\n";
        return true;
    }
    out_ += "<array>\n";
    for (const CFTypeRef item : valuesOf(value))
        if (!write(item, depth + 1)) return false;
    indent(depth);
    out_ += "</array>\n";
    return true;
}

bool XMLWriter::dictionary(CFDictionaryRef value, int depth) {
    if (CFDictionaryGetCount(value) == 0) {
        out_ += "<dict/>\n";
        return true;
    }
    out_ += "<dict>\n";
    const Entries entries = entriesOf(value);
    for (std::size_t i = 0; i < entries.keys.size(); ++i) {
        const auto* const key = cfCast<__CFString>(entries.keys[i]);
        if (key == nullptr) return false;
        indent(depth + 1);
        out_ += "<key>";
        appendEscaped(*key, out_);
        out_ += "</key>\n";
        if (!write(entries.values[i], depth + 1)) return false;
    }
    indent(depth);
    out_ += "</dict>\n";
    return true;
}

bool XMLWriter::write(CFTypeRef value, int depth) {
    if (value == nullptr || depth > kMaxDepth) return false;
    indent(depth);
    const CFTypeID type = CFGetTypeID(value);
    if (const auto* const string = cfCast<__CFString>(value)) {
        out_ += "<string>";
        appendEscaped(*string, out_);
        out_ += "</string>\n";
    } else if (const auto* const number = cfCast<__CFNumber>(value)) {
        element(number->isReal() ? "real" : "integer", numberText(*number));
    } else if (type == CFBooleanGetTypeID()) {
        out_ += CFBooleanGetValue(static_cast<CFBooleanRef>(value)) ? "<true/>\n" : "<false/>\n";
    } else if (type == CFDateGetTypeID()) {
        element("date", iso8601(CFDateGetAbsoluteTime(static_cast<CFDateRef>(value))));
    } else if (type == CFDataGetTypeID()) {
        data(static_cast<CFDataRef>(value), depth);
    } else if (type == CFArrayGetTypeID()) {
        return array(static_cast<CFArrayRef>(value), depth);
    } else if (type == CFDictionaryGetTypeID()) {
        return dictionary(static_cast<CFDictionaryRef>(value), depth);
    } else {
        return false;
    }
    return true;
}

}  // namespace

bool writeXML(CFTypeRef list, std::string& out) {
    out += kHead;
    if (!XMLWriter(out).write(list, 1)) return false;
    out += "</plist>\n";
    return true;
}

}  // namespace osa::plist
