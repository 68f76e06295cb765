// LSOpenFromRefSpec and the older LaunchApplication.
#include <CoreServices/LaunchServices.h>
#include <CoreServices/MacErrors.h>

#include <new>
#include <span>

#include "platform/files/References.h"
#include "platform/services/DesktopOpener.h"
#include "platform/services/launching/Launching.h"

namespace osa {
namespace {

Result<std::vector<std::string>> documentPaths(const LSLaunchFSRefSpec& spec) {
    std::vector<std::string> paths;
    for (const FSRef& document : std::span(spec.itemRefs, spec.numDocs)) {
        OSA_TRY(const Located found, locate(&document));
        paths.push_back(found.path());
    }
    return paths;
}

Result<void> open(const LSLaunchFSRefSpec& spec, FSRef& launchedRef) {
    if ((spec.itemRefs == nullptr && spec.numDocs > 0) ||
        (spec.appRef == nullptr && spec.numDocs == 0)) {
        return Failure(paramErr);
    }
    OSA_TRY(const std::vector<std::string> documents, documentPaths(spec));
    if (spec.appRef != nullptr) {
        OSA_TRY(const Launched launched, launch(*spec.appRef, documents, spec.launchFlags));
        launchedRef = launched.application;
        return {};
    }
    const bool mayComeToFront = (spec.launchFlags & kLSLaunchDontSwitch) == 0;
    for (const std::string& document : documents) {
        OSA_CHECK(openWithDesktop(document, mayComeToFront));
    }
    launchedRef = {};  // the desktop does not tell
    return {};
}

Result<void> launchOldWay(LaunchParamBlockRec& block) {
    if (block.launchBlockID != extendedBlock || block.launchEPBLength != extendedBlockLen ||
        block.launchAppSpec == nullptr) {
        return Failure(paramErr);
    }
    FSRef application;
    const OSStatus status = FSpMakeFSRef(block.launchAppSpec, &application);
    if (status != noErr) return Failure(status);
    const bool staysBehind = (block.launchControlFlags & launchDontSwitch) != 0;
    OSA_TRY(const Launched launched,
            launch(application, {}, staysBehind ? kLSLaunchDontSwitch : kLSLaunchDefaults));
    block.launchProcessSN = launched.process;
    block.launchPreferredSize = block.launchMinimumSize = block.launchAvailableSize = 0;
    return {};
}

}  // namespace
}  // namespace osa

OSStatus LSOpenFromRefSpec(const LSLaunchFSRefSpec* spec, FSRef* launchedRef) {
    if (spec == nullptr) return paramErr;
    try {
        FSRef unused;
        return osa::open(*spec, launchedRef != nullptr ? *launchedRef : unused).status();
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

OSErr LaunchApplication(LaunchPBPtr params) {
    if (params == nullptr) return paramErr;
    try {
        return static_cast<OSErr>(osa::launchOldWay(*params).status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
