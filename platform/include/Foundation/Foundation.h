// The few Foundation classes that readers of Mac files need, restated for C++: a class keeps its
// name, a message becomes a function of that name, and the receiver, where there is one, is the
// first argument.
//
// Strings, dictionaries, data and the like are Core Foundation objects. Whatever is returned here
// is autoreleased: it lives until the calling thread's innermost autorelease pool is released, and
// a caller who wants it longer retains it. As with messages to nil, a null receiver answers null
// and does nothing.
//
// What raises an exception there throws an NSException here. These are the only functions of the
// platform that throw anything.
#pragma once

#include <CoreFoundation/CFBase.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#include <string>

/// A raised exception. It is related to no other type, so that a handler for statuses lets it by.
class OSA_PLATFORM_EXPORT NSException {
  public:
    NSException(std::string name, std::string reason);
    NSException(const NSException&);
    virtual ~NSException();

    /// The kind, for example "NSInvalidArgumentException".
    const std::string& name() const { return name_; }
    /// For people.
    const std::string& reason() const { return reason_; }

  private:
    std::string name_;
    std::string reason_;
};

/// Keeps autoreleased objects until it is released. Pools of a thread form a stack; objects go to
/// the innermost. A thread without a pool keeps its objects until it ends.
class OSA_PLATFORM_EXPORT NSAutoreleasePool {
  public:
    /// A new innermost pool of the calling thread (alloc and init in one).
    static NSAutoreleasePool* create();
    /// Releases the pool's objects, the latest first, and the pool itself. Pools made later on the
    /// thread and not yet released go with it. Only on the thread that made it.
    void release();
    /// The same.
    void drain() { release(); }

    /// Hands one reference of the caller's to the innermost pool of the thread. Null is ignored.
    static void addObject(CFTypeRef owned);

    NSAutoreleasePool(const NSAutoreleasePool&) = delete;
    NSAutoreleasePool& operator=(const NSAutoreleasePool&) = delete;

  private:
    NSAutoreleasePool() = default;
    ~NSAutoreleasePool() = default;
};

struct OSA_PLATFORM_EXPORT NSData {
    /// A copy of `length` bytes. Null when memory fails.
    static CFDataRef dataWithBytes(const void* bytes, CFIndex length);
};

/// Reader of the older, non-keyed archives. Objects of property-list classes become what a property
/// list would hold: sets become arrays, URLs and attributed strings their strings, numbers archived
/// as characters 0 and 1 Booleans. Objects of other classes are read through and left out, and so
/// are containers inside themselves and dictionary entries of which a half was left out.
struct OSA_PLATFORM_EXPORT NSUnarchiver {
    /// The root object; null for null data, and for a root that is nil or left out. Throws
    /// NSArchiverArchiveInconsistency when the bytes are no such archive, are damaged, nested more
    /// than 500 levels deep, larger than 16 MiB, or would take more than 64 MiB without sharing.
    static CFTypeRef unarchiveObjectWithData(CFDataRef data);
};

struct OSA_PLATFORM_EXPORT NSDictionary {
    /// The property list in a file, in any form. Null when it cannot be read, is larger than 64
    /// MiB, is no property list, or its root is no dictionary.
    static CFDictionaryRef dictionaryWithContentsOfURL(CFURLRef url);
    /// The value of `key`, or null. Throws NSInvalidArgumentException when the receiver is an
    /// object but no dictionary.
    static CFTypeRef objectForKey(CFTypeRef dictionary, CFTypeRef key);
    /// Adds all entries of `other`, replacing those of equal keys. Throws
    /// NSInvalidArgumentException when `other` is an object but no dictionary.
    static void addEntriesFromDictionary(CFMutableDictionaryRef dictionary, CFTypeRef other);
};

struct OSA_PLATFORM_EXPORT NSString {
    /// The text in a file: UTF-16 or UTF-8 when it begins with the mark of one, else in
    /// CFStringGetSystemEncoding(). Null when it cannot be read, is larger than 64 MiB, or is
    /// malformed in that encoding.
    static CFStringRef stringWithContentsOfURL(CFURLRef url);
};

/// The text of a document, of which only the characters are kept.
class OSA_PLATFORM_EXPORT NSAttributedString {
  public:
    /// Reads rich text, alone or as the folder that holds its attachments too (then the text is in
    /// its "TXT.rtf"); any other file as stringWithContentsOfURL does. `documentAttributes` is not
    /// filled. The result is nil when the document cannot be read.
    static NSAttributedString initWithURL(CFURLRef url, CFDictionaryRef* documentAttributes);

    bool isNil() const { return string_ == nullptr; }
    /// The characters: paragraphs end in U+000A, forced line ends are U+2028, attachments U+FFFC.
    /// Null for nil.
    CFStringRef string() const { return string_; }

  private:
    explicit NSAttributedString(CFStringRef autoreleased) : string_(autoreleased) {}
    CFStringRef string_;
};
