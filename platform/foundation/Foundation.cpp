// The published functions. They throw NSException and nothing else; memory that runs out in the
// middle of outside data counts as data that cannot be read.
#include <CoreFoundation/CFPropertyList.h>
#include <CoreFoundation/CFRef.h>
#include <Foundation/Foundation.h>

#include <new>

#include "platform/foundation/DocumentFiles.h"
#include "platform/foundation/TypedStream.h"

using namespace osa;

namespace {

constexpr CFIndex kLargestArchive = 16 << 20;

template <typename T>
T autoreleased(CFRef<T> object) {
    NSAutoreleasePool::addObject(object.get());
    return object.leak();
}

/// Runs `work`, which gives a CFRef; an empty one when memory runs out.
template <typename Work>
auto withMemory(Work&& work) -> decltype(work()) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return {};
    }
}

bool isDictionary(CFTypeRef object) {
    return CFGetTypeID(object) == CFDictionaryGetTypeID();
}

[[noreturn]] void raiseNotADictionary(const char* selector) {
    throw NSException("NSInvalidArgumentException",
                      std::string(selector) + ": the object is not a dictionary");
}

[[noreturn]] void raiseBadArchive(const std::string& reason) {
    throw NSException("NSArchiverArchiveInconsistency", reason);
}

CFRef<CFDictionaryRef> readDictionary(CFURLRef url) {
    const auto path = pathOfURL(url);
    if (!path) return {};
    const auto bytes = readDocument(*path);
    if (!bytes) return {};
    const auto data = CFRef<CFDataRef>::Adopt(
        CFDataCreate(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(bytes->data()),
                     static_cast<CFIndex>(bytes->size())));
    if (!data) return {};
    auto root = CFRef<CFTypeRef>::Adopt(CFPropertyListCreateWithData(
        kCFAllocatorDefault, data.get(), kCFPropertyListImmutable, nullptr, nullptr));
    if (!root || !isDictionary(root.get())) return {};
    return CFRef<CFDictionaryRef>::Adopt(static_cast<CFDictionaryRef>(root.leak()));
}

}  // namespace

CFDataRef NSData::dataWithBytes(const void* bytes, CFIndex length) {
    return autoreleased(CFRef<CFDataRef>::Adopt(
        CFDataCreate(kCFAllocatorDefault, static_cast<const UInt8*>(bytes), length)));
}

CFTypeRef NSUnarchiver::unarchiveObjectWithData(CFDataRef data) {
    if (data == nullptr) return nullptr;
    const CFIndex length = CFDataGetLength(data);
    if (length > kLargestArchive) raiseBadArchive("archive is too large");
    std::string reason = "out of memory";
    CFRef<CFTypeRef> root = withMemory([&] {
        TypedStream stream(ByteSpan(reinterpret_cast<const std::byte*>(CFDataGetBytePtr(data)),
                                    static_cast<std::size_t>(length)));
        auto object = stream.readRoot();
        reason = stream.reason();
        return object;
    });
    if (!reason.empty()) raiseBadArchive(reason);
    return autoreleased(std::move(root));
}

CFDictionaryRef NSDictionary::dictionaryWithContentsOfURL(CFURLRef url) {
    return autoreleased(withMemory([&] { return readDictionary(url); }));
}

CFTypeRef NSDictionary::objectForKey(CFTypeRef dictionary, CFTypeRef key) {
    if (dictionary == nullptr) return nullptr;
    if (!isDictionary(dictionary)) raiseNotADictionary("objectForKey:");
    if (key == nullptr) return nullptr;
    const void* const value = CFDictionaryGetValue(static_cast<CFDictionaryRef>(dictionary), key);
    if (value == nullptr) return nullptr;
    return autoreleased(CFRef<CFTypeRef>::Retain(value));
}

void NSDictionary::addEntriesFromDictionary(CFMutableDictionaryRef dictionary, CFTypeRef other) {
    if (dictionary == nullptr || other == nullptr) return;
    if (!isDictionary(other)) raiseNotADictionary("addEntriesFromDictionary:");
    if (other == dictionary) return;
    CFDictionaryApplyFunction(
        static_cast<CFDictionaryRef>(other),
        [](const void* key, const void* value, void* target) {
            CFDictionarySetValue(static_cast<CFMutableDictionaryRef>(target), key, value);
        },
        dictionary);
}

CFStringRef NSString::stringWithContentsOfURL(CFURLRef url) {
    return autoreleased(withMemory([&]() -> CFRef<CFStringRef> {
        const auto path = pathOfURL(url);
        if (!path) return {};
        const auto bytes = readDocument(*path);
        return bytes ? plainTextString(*bytes) : CFRef<CFStringRef>();
    }));
}

NSAttributedString NSAttributedString::initWithURL(CFURLRef url, CFDictionaryRef*) {
    return NSAttributedString(autoreleased(withMemory([&]() -> CFRef<CFStringRef> {
        const auto path = pathOfURL(url);
        return path ? documentString(*path) : CFRef<CFStringRef>();
    })));
}
