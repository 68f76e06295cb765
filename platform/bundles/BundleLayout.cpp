// Recognising the layouts of bundles: modern, old with support files, and flat.
#include "platform/bundles/BundleLayout.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/posix/FileSystem.h"

namespace osa {
namespace {

constexpr std::array<std::string_view, 5> kBundleExtensions = {"app", "bundle", "scptd",
                                                               "framework", "plugin"};

bool exists(const std::string& path) {
    return posix::status(path, posix::Follow::yes).ok();
}

bool isFolder(const std::string& path) {
    const auto status = posix::status(path, posix::Follow::yes);
    return status.ok() && status->isFolder();
}

bool holdsInformation(const std::string& folder) {
    return exists(folder + "/Info.plist") || exists(folder + "/PkgInfo");
}

bool hasBundleExtension(const std::string& path) {
    const std::string extension = nameExtension(path);
    return std::find(kBundleExtensions.begin(), kBundleExtensions.end(), extension) !=
           kBundleExtensions.end();
}

BundleLayout supportedLayout(const std::string& root, const std::string& support) {
    return {root, {support}, support + "/Resources", {support + "/Linux", support + "/MacOS"}};
}

}  // namespace

std::optional<BundleLayout> findBundleLayout(const std::string& path) {
    if (!isFolder(path)) return std::nullopt;
    for (const char* const support : {"/Contents", "/Support Files"}) {
        if (isFolder(path + support)) return supportedLayout(path, path + support);
    }
    const std::string resources = path + "/Resources";
    const bool hasResources = isFolder(resources);
    const bool isBundle = hasBundleExtension(path) || holdsInformation(path) ||
                          (hasResources && holdsInformation(resources));
    if (!isBundle) return std::nullopt;
    return BundleLayout{path,
                        {path, resources},
                        hasResources ? resources : path,
                        {path + "/Linux", path + "/MacOS", path}};
}

std::string leafName(const std::string& path) {
    return path.substr(path.find_last_of('/') + 1);
}

std::string nameExtension(const std::string& path) {
    const std::string name = leafName(path);
    const std::size_t dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot + 1);
}

}  // namespace osa
