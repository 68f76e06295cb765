// CFBundle: the program file, and the host's own bundle.
#include <dlfcn.h>

#include "platform/bundles/Bundle.h"
#include "platform/cf/StringObject.h"
#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

/// The bundle that the program lies in as it should, or a bundle around the bare program.
CFBundleRef makeMainBundle() {
    // The first thread, which "self" goes by, may have ended.
    const auto program = posix::readLink("/proc/thread-self/exe");
    if (!program.ok()) return nullptr;
    const std::string folder = program->substr(0, program->find_last_of('/'));
    if (auto layout = enclosingBundle(*program)) return makeObject<__CFBundle>(std::move(*layout));
    auto* const bundle = makeObject<__CFBundle>(BundleLayout{folder, {}, folder, {folder}});
    if (bundle == nullptr) return nullptr;
    const auto name = CFRef<CFStringRef>::Adopt(createString(leafName(*program)));
    const void* const key = kCFBundleExecutableKey;
    const void* const value = name.get();
    std::call_once(bundle->informationRead, [&] {
        bundle->informationDictionary = CFRef<CFDictionaryRef>::Adopt(CFDictionaryCreate(
            kCFAllocatorDefault, const_cast<const void**>(&key), const_cast<const void**>(&value),
            name ? 1 : 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
    });
    return bundle;
}

}  // namespace

std::string findProgram(CFBundleRef bundle) {
    std::string name = bundle->informationText(kCFBundleExecutableKey);
    if (name.empty()) {
        name = leafName(bundle->layout.root);
        name.resize(name.size() -
                    (nameExtension(name).empty() ? 0 : nameExtension(name).size() + 1));
    }
    if (name.empty() || name.find('/') != std::string::npos) return {};
    for (const std::string& folder : bundle->layout.programFolders) {
        const auto status = posix::status(folder + "/" + name, posix::Follow::yes);
        if (status.ok() && status->isRegular()) return folder + "/" + name;
    }
    return {};
}

}  // namespace osa

CFBundleRef CFBundleGetMainBundle(void) {
    static const CFBundleRef mainBundle = osa::makeMainBundle();
    return mainBundle;
}

CFURLRef CFBundleCopyExecutableURL(CFBundleRef bundle) {
    if (bundle == nullptr) return nullptr;
    const std::string program = osa::findProgram(bundle);
    return program.empty() ? nullptr : osa::makeFileURL(program, false).leak();
}

Boolean CFBundleLoadExecutable(CFBundleRef bundle) {
    if (bundle == nullptr) return false;
    const std::lock_guard<std::mutex> lock(bundle->programLock);
    if (bundle->program != nullptr) return true;
    const std::string program = osa::findProgram(bundle);
    if (!program.empty()) bundle->program = dlopen(program.c_str(), RTLD_NOW | RTLD_LOCAL);
    return bundle->program != nullptr;
}

void* CFBundleGetFunctionPointerForName(CFBundleRef bundle, CFStringRef name) {
    if (name == nullptr || !CFBundleLoadExecutable(bundle)) return nullptr;
    return dlsym(bundle->program, osa::utf8Of(name).c_str());
}
