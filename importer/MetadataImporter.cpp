// GetMetadataForFile: classify, read by kind, log what fails.
#include "importer/MetadataImporter.h"

#include <CoreFoundation/CFURL.h>
#include <CoreServices/MacErrors.h>
#include <Foundation/Foundation.h>

#include <iostream>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "importer/MetadataSources.h"
#include "importer/ScriptType.h"

namespace {

// Kinds that are read alike, a bit a kind.
constexpr UInt32 kResourceKinds = 1 << kScriptTypeDataForkScript | 1 << kScriptTypeResourceScript |
                                  1 << kScriptTypeCarbonApplet | 1 << kScriptTypeClassicApplet;
constexpr UInt32 kBundleKinds = 1 << kScriptTypeBundleScript | 1 << kScriptTypeBundleApplet;
constexpr UInt32 kTextKinds = 1 << kScriptTypeText;
static_assert(kResourceKinds == 0xAC && kBundleKinds == 0x50 && kTextKinds == 0x02);

/// The call's own autorelease pool: the thread that the service calls on may have none.
class SAutoreleasePool {
  public:
    SAutoreleasePool() = default;
    SAutoreleasePool(const SAutoreleasePool&) = delete;
    SAutoreleasePool& operator=(const SAutoreleasePool&) = delete;
    ~SAutoreleasePool() { mPool->release(); }

  private:
    NSAutoreleasePool* mPool = NSAutoreleasePool::create();
};

CFileSpec SpecOf(CFURLRef itemURL) {
    FSRef ref;
    if (!CFURLGetFSRef(itemURL, &ref)) FailOSErr(fnfErr);
    return CFileSpec(ref);
}

/// Whether the service is to be told that something was imported.
bool Import(CFURLRef itemURL, CFMutableDictionaryRef attributes) {
    const CFileSpec spec = SpecOf(itemURL);
    const ScriptType kind = GetScriptType(spec);
    if (kind > kScriptTypeClassicApplet) return false;
    const UInt32 bit = 1U << kind;
    if ((bit & kResourceKinds) != 0) {
        ImportResourceScript(spec, attributes);
        return true;
    }
    if ((bit & kBundleKinds) != 0) {
        ImportBundleScript(itemURL, attributes);
        return true;
    }
    if ((bit & kTextKinds) != 0) {
        try {
            ImportTextScript(spec, itemURL, attributes);
        } catch (...) {
            // Most text files have no resources to open; that is nothing to report.
        }
    }
    return false;
}

}  // namespace

Boolean GetMetadataForFile(void* /*thisInterface*/, CFMutableDictionaryRef attributes,
                           CFStringRef /*contentTypeUTI*/, CFStringRef pathToFile) {
    // Declared first, so that it goes last, whatever happens below.
    const SAutoreleasePool pool;
    SCoreFoundation<CFURLRef> itemURL;
    try {
        itemURL = CFURLCreateWithFileSystemPath(kCFAllocatorDefault, pathToFile,
                                                kCFURLPOSIXPathStyle, false);
        FailNIL(itemURL);
        return Import(itemURL, attributes);
    } catch (OSStatus status) {
        std::cerr << "OSAImporter: unexpected Mac OS error: " << status << std::endl;
    } catch (...) {
        std::cerr << "OSAImporter: unexpected C++ exception" << std::endl;
    }
    return false;
}
