// CFURL: creation from text, access to the text and its parts.
#include <CoreFoundation/CFURL.h>

#include "platform/cf/url/PercentEscapes.h"
#include "platform/cf/url/URLObject.h"
#include "platform/text/TextConverter.h"

__CFURL::~__CFURL() {
    const CFStringRef made = string_.load(std::memory_order_acquire);
    if (made != nullptr) CFRelease(made);
    if (base != nullptr) CFRelease(base);
}

/// Two threads may make it at the same time: the first to be done sets it for all.
CFStringRef __CFURL::makeString() const {
    try {
        std::string text = "file://" + osa::escapePath(path);
        if (isDirectory && !text.ends_with('/')) text += '/';
        const CFStringRef made = osa::createMacRomanString(osa::asBytes(text));
        CFStringRef first = nullptr;
        if (made == nullptr || string_.compare_exchange_strong(first, made)) return made;
        CFRelease(made);
        return first;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace {

bool equalURLs(const osa::CFObject* a, const osa::CFObject* b) {
    const auto& first = *static_cast<const __CFURL*>(a);
    const auto& second = *static_cast<const __CFURL*>(b);
    return first.text() == second.text() && CFEqual(first.base, second.base);
}

CFHashCode hashURL(const osa::CFObject* object) {
    return CFHash(static_cast<const __CFURL*>(object)->string());
}

std::string describeURL(const osa::CFObject* object) {
    const auto& url = *static_cast<const __CFURL*>(object);
    const std::string text(url.text());
    return url.base == nullptr ? text : text + " -- " + osa::describe(url.base);
}

CFStringRef copyPart(const std::optional<std::string_view>& part) {
    return part ? osa::createString(*part) : nullptr;
}

}  // namespace

constinit const osa::ClassRecord __CFURL::kClass{"CFURL", osa::deleteObject<__CFURL>, equalURLs,
                                                 hashURL, describeURL};

namespace osa {

CFURLRef createURL(std::string_view text, CFURLRef base) {
    const CFStringRef string = createMacRomanString(asBytes(text));
    if (string == nullptr) return nullptr;
    if (parseURL(text).scheme) base = nullptr;
    if (base != nullptr) CFRetain(base);
    const CFURLRef url = makeObject<__CFURL>(string, base);
    if (url != nullptr) return url;
    CFRelease(string);
    if (base != nullptr) CFRelease(base);
    return nullptr;
}

std::string absoluteText(CFURLRef url) {
    std::string text(url->text());
    for (CFURLRef base = url->base; base != nullptr; base = base->base)
        text = resolveURL(base->text(), text);
    return text;
}

}  // namespace osa

CFTypeID CFURLGetTypeID() {
    return osa::typeIDOf(__CFURL::kClass);
}

CFURLRef CFURLCreateWithString(CFAllocatorRef, CFStringRef string, CFURLRef base) {
    if (string == nullptr) return nullptr;
    const std::string text = osa::utf8Of(string);
    const bool usable = !text.empty() || base != nullptr;
    return usable && osa::isLegalURLText(text) ? osa::createURL(text, base) : nullptr;
}

CFURLRef CFURLCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex length,
                              CFStringEncoding encoding, CFURLRef base) {
    if (bytes == nullptr || length <= 0) return nullptr;
    // In encodings that are not made of ASCII bytes and others, escaping would make no sense.
    if (osa::maximumBytesPerUnit(encoding) == 0) return nullptr;
    std::string ascii;
    if (osa::encodeText(u"a", encoding, 0, ascii) != 1 || ascii != "a") return nullptr;
    try {
        const std::string_view text(reinterpret_cast<const char*>(bytes),
                                    static_cast<std::size_t>(length));
        return osa::createURL(osa::escapeIllegal(text), base);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

CFStringRef CFURLGetString(CFURLRef url) {
    return url == nullptr ? nullptr : url->string();
}

CFURLRef CFURLGetBaseURL(CFURLRef url) {
    return url == nullptr ? nullptr : url->base;
}

CFURLRef CFURLCopyAbsoluteURL(CFURLRef url) {
    if (url == nullptr) return nullptr;
    if (url->base == nullptr) return static_cast<CFURLRef>(CFRetain(url));
    return osa::createURL(osa::absoluteText(url), nullptr);
}

CFDataRef CFURLCreateData(CFAllocatorRef allocator, CFURLRef url, CFStringEncoding encoding,
                          Boolean) {
    const CFURLRef absolute = CFURLCopyAbsoluteURL(url);
    if (absolute == nullptr) return nullptr;
    const CFDataRef data =
        CFStringCreateExternalRepresentation(allocator, absolute->string(), encoding, 0);
    CFRelease(absolute);
    return data;
}

CFStringRef CFURLCopyScheme(CFURLRef url) {
    if (url == nullptr) return nullptr;
    const auto scheme = url->parts().scheme;
    return scheme || url->base == nullptr ? copyPart(scheme) : CFURLCopyScheme(url->base);
}

CFStringRef CFURLCopyNetLocation(CFURLRef url) {
    if (url == nullptr) return nullptr;
    const osa::URLParts parts = url->parts();
    const bool own = parts.authority || parts.scheme || url->base == nullptr;
    return own ? copyPart(parts.authority) : CFURLCopyNetLocation(url->base);
}

CFStringRef CFURLCopyHostName(CFURLRef url) {
    const CFStringRef location = CFURLCopyNetLocation(url);
    if (location == nullptr) return nullptr;
    std::string_view host = location->macRoman();
    host.remove_prefix(host.rfind('@') == host.npos ? 0 : host.rfind('@') + 1);
    host = host.substr(0, host.rfind(':'));
    const CFStringRef name = host.empty() ? nullptr : osa::createString(host);
    CFRelease(location);
    return name;
}

CFStringRef CFURLCopyPath(CFURLRef url) {
    if (url == nullptr || url->parts().isOpaque()) return nullptr;
    return osa::createString(url->parts().path);
}

CFStringRef CFURLCopyResourceSpecifier(CFURLRef url) {
    if (url == nullptr) return nullptr;
    const osa::URLParts parts = url->parts();
    if (parts.isOpaque()) return osa::createString(std::string(parts.path).append(parts.rest));
    return parts.rest.empty() ? nullptr : osa::createString(parts.rest);
}

Boolean CFURLCanBeDecomposed(CFURLRef url) {
    return url != nullptr && !url->parts().isOpaque();
}
