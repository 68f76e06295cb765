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

/// A folder inside a bundle that by itself would pass for another one.
bool isSupportFolder(std::string_view name) {
    return name == "Contents" || name == "Support Files";
}

BundleLayout supportedLayout(const std::string& root, const std::string& support) {
    return {root, {support}, support + "/Resources", {support + "/Linux", support + "/MacOS"}};
}

/// Whether the information lies beside whatever else the folder holds.
bool isFlat(const BundleLayout& layout) {
    return layout.supportFolders.front() == layout.root;
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

std::optional<BundleLayout> enclosingBundle(const std::string& program) {
    constexpr int deepest = 3;  // Contents, program folder, program
    const std::string folder = program.substr(0, program.find_last_of('/'));
    std::string root = folder;
    for (int depth = 1; depth <= deepest && root.starts_with('/'); ++depth) {
        if (auto layout = isSupportFolder(leafName(root)) ? std::nullopt : findBundleLayout(root)) {
            const auto& places = layout->programFolders;
            const bool isProper = !isFlat(*layout) || hasBundleExtension(root);
            if (isProper && std::find(places.begin(), places.end(), folder) != places.end()) {
                return layout;
            }
        }
        root.resize(root.find_last_of('/'));
    }
    return std::nullopt;
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
