// The insides of CFBundle, for the files of this room.
#pragma once

#include <CoreFoundation/CFBundle.h>
#include <CoreFoundation/CFRef.h>

#include <mutex>
#include <string>
#include <vector>

#include "platform/bundles/BundleLayout.h"
#include "platform/cf/CFRuntime.h"

struct __CFBundle : osa::CFObject {
    static const osa::ClassRecord kClass;

    explicit __CFBundle(osa::BundleLayout found) : CFObject(kClass), layout(std::move(found)) {}

    /// Read on first use; never null. Borrowed.
    CFDictionaryRef information();
    /// A string of the information dictionary in UTF-8; empty when missing or of another type.
    std::string informationText(CFStringRef key);

    const osa::BundleLayout layout;

    std::once_flag informationRead;
    CFRef<CFDictionaryRef> informationDictionary;
    std::once_flag localizedRead;
    CFRef<CFDictionaryRef> localizedInformation;

    std::mutex programLock;
    void* program = nullptr;
    /// Factory identifiers that this plug-in has registered; empty for a plain bundle.
    std::vector<CFRef<CFTypeRef>> factories;
};

namespace osa {

/// A property list file that holds a dictionary; null when it is missing, too long or anything
/// else.
CFRef<CFDictionaryRef> readDictionaryFile(const std::string& path);

/// The localised folders of a bundle, the user's languages first, then its development region.
std::vector<std::string> localizedFolders(CFBundleRef bundle);

CFRef<CFURLRef> makeFileURL(const std::string& path, bool isDirectory);

/// The bundle's program file that exists; empty when there is none.
std::string findProgram(CFBundleRef bundle);

/// Takes the plug-in's factories off the register; called when it goes.
void unregisterFactories(CFBundleRef plugIn);

}  // namespace osa
