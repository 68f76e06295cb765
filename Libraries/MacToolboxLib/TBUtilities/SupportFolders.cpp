// Searching the application's locations.
#include "Libraries/MacToolboxLib/TBUtilities/SupportFolders.h"

#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>

#include "Libraries/MacToolboxLib/TBUtilities/Applications/Applications.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/FileVisitor.h"

namespace {

const TCLString& ContentsName() {
    static const TCLString sContents = ToTCLString("Contents", kCFStringEncodingMacRoman);
    return sContents;
}

const TCLString& ResourcesName() {
    static const TCLString sResources = ToTCLString("Resources", kCFStringEncodingMacRoman);
    return sResources;
}

CFileSpec UserFolder(OSType type) {
    FSRef folder;
    FailOSErr(FSFindFolder(kUserDomain, type, kCreateFolder, &folder));
    return CFileSpec(folder);
}

/// Looks `name` up with its size in bytes for the number of its units, as these lookups always
/// have: the units beyond its end are zeros, which end a name.
OSErr LookUp(const CFileSpec& folder, const TCLString& name, FSRef& child) {
    TCLString padded = name;
    padded.resize(name.size() * sizeof(UniChar));
    return FSMakeFSRefUnicode(&folder.GetFSRef(), padded.size(), padded.data(), 0, &child);
}

CFileSpec Child(const CFileSpec& folder, const TCLString& name) {
    FSRef child;
    FailOSErr(LookUp(folder, name, child));
    return CFileSpec(child);
}

CFileSpec ChildByMake(const CFileSpec& folder, const TCLString& name) {
    return folder.Make(name);
}

CFileSpec ChildFolderMade(const CFileSpec& folder, const TCLString& name) {
    FSRef child;
    if (LookUp(folder, name, child) != noErr) {
        const OSErr status =
            FSCreateDirectoryUnicode(&folder.GetFSRef(), name.size(), name.data(), kFSCatInfoNone,
                                     nullptr, &child, nullptr, nullptr);
        // Another program of the name may have made it meanwhile.
        FailOSErr(status == dupFNErr ? LookUp(folder, name, child) : status);
    }
    return CFileSpec(child);
}

/// How a child is looked up by name.
using ChildOf = CFileSpec (*)(const CFileSpec& folder, const TCLString& name);

CFileSpec OwnSupportFolder(ChildOf child) {
    return child(UserFolder(kApplicationSupportFolderType), GetApplicationName());
}

/// Calls `work`, any failure of which counts for nothing; whether there was none.
template <typename Work>
bool Try(Work work) {
    try {
        work();
        return true;
    } catch (...) {
        return false;
    }
}

/// Collects in every location; `inLocation` gives the folder to scan in it.
template <typename InLocation>
std::vector<CFileSpec> FindFolders(const TCLString& extension, ChildOf child,
                                   InLocation inLocation) {
    std::map<TCLString, CFileSpec> found;
    ExtensionVisitor visitor(extension, true, &found);
    const auto scan = [&](const CFileSpec& location) { visitor.ScanFolder(inLocation(location)); };
    Try([&] { scan(OwnSupportFolder(child)); });
    Try([&] { scan(GetApplicationFileSpec().GetParent()); });
    const CFileSpec contents = child(GetApplicationFileSpec(), ContentsName());
    Try([&] { scan(contents); });
    Try([&] { scan(child(contents, ResourcesName())); });
    std::vector<CFileSpec> folders;
    folders.reserve(found.size());
    for (const auto& [name, folder] : found) folders.push_back(folder);
    return folders;
}

}  // namespace

CFileSpec FindInSupportFolder(const TCLString& name) {
    CFileSpec found;
    if (Try([&] { found = Child(OwnSupportFolder(Child), name); })) return found;
    if (Try([&] { found = Child(GetApplicationFileSpec().GetParent(), name); })) return found;
    const CFileSpec contents = Child(GetApplicationFileSpec(), ContentsName());
    if (Try([&] { found = Child(contents, name); })) return found;
    return Child(Child(contents, ResourcesName()), name);
}

std::vector<CFileSpec> FindInSupportFolderOfType(const TCLString& extension) {
    return FindFolders(extension, ChildByMake, [](const CFileSpec& location) { return location; });
}

std::vector<CFileSpec> FindInSupportFolderOfType(const TCLString& extension,
                                                 const TCLString& subfolder) {
    return FindFolders(extension, Child,
                       [&](const CFileSpec& location) { return Child(location, subfolder); });
}

CFileSpec MakeInSupportFolder(const TCLString& name) {
    const CFileSpec own =
        ChildFolderMade(UserFolder(kApplicationSupportFolderType), GetApplicationName());
    return ChildFolderMade(own, name);
}

CFileSpec GetCacheFolder() {
    return ChildFolderMade(UserFolder(kCachedDataFolderType), GetApplicationName());
}

CFileSpec GetHomeFolder() {
    return UserFolder(kCurrentUserFolderType);
}

CFileSpec GetDesktopFolder() {
    return UserFolder(kPreferencesFolderType);
}

CFileSpec GetTempFolder() {
    return UserFolder(kUserSpecificTmpFolderType);
}
