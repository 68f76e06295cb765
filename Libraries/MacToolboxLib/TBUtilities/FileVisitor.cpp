// Walking a folder, and collecting by extension.
#include "Libraries/MacToolboxLib/TBUtilities/FileVisitor.h"

#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/StringUtilities.h"

namespace {

constexpr char kUnit[] = "Libraries/MacToolboxLib/TBUtilities";

/// An open iterator; closing it can fail, so it is closed by name.
class FolderIterator {
  public:
    explicit FolderIterator(const FSRef& folder) {
        FailOSErr(FSOpenIterator(&folder, kFSIterateFlat, &mIterator));
    }
    FolderIterator(const FolderIterator&) = delete;
    FolderIterator& operator=(const FolderIterator&) = delete;

    /// False at the end, whatever ended it.
    bool Next(FSRef& entry) {
        ItemCount count = 0;
        return FSGetCatalogInfoBulk(mIterator, 1, &count, nullptr, kFSCatInfoNone, nullptr, &entry,
                                    nullptr, nullptr) == noErr;
    }
    void Close() { FailOSErr(FSCloseIterator(std::exchange(mIterator, nullptr))); }

  private:
    FSIterator mIterator = nullptr;
};

/// The entry's name; empty when it is none that Mac text can hold, or the entry is gone meanwhile.
TCLString NameOf(const CFileSpec& file) {
    TCLString name;
    try {
        file.GetName(name);
    } catch (OSStatus status) {
        if (status != bdNamErr && status != fnfErr) throw;
    }
    return name;
}

}  // namespace

void FileVisitor::ScanFolder(const CFileSpec& folder) {
    FolderIterator entries(folder.GetFSRef());
    try {
        bool goesOn = true;
        FSRef entry;
        while (goesOn && entries.Next(entry)) {
            Boolean isFolder = false;
            Boolean wasAliased = false;
            const OSErr status = FSResolveAliasFileWithMountFlags(
                &entry, true, &isFolder, &wasAliased, kResolveAliasFileNoUI);
            if (status == noErr) goesOn = ProcessFile(CFileSpec(entry), isFolder != 0);
        }
    } catch (...) {
        entries.Close();
        throw;
    }
    entries.Close();
}

ExtensionVisitor::ExtensionVisitor(const TCLString& extension, bool wantFolders,
                                   std::map<TCLString, CFileSpec>* files)
    : mExtension(ToLowercase(extension)), mWantFolders(wantFolders), mFiles(files) {}

bool ExtensionVisitor::ProcessFile(const CFileSpec& theFile, bool isFolder) {
    TB_ASSERT(kUnit, mExtension.length() > 0);
    TB_ASSERT(kUnit, theFile.Exists());
    if (isFolder != mWantFolders) return true;
    const TCLString name = NameOf(theFile);
    const std::size_t found = ToLowercase(name).rfind(mExtension);
    const bool isMatch =
        found != TCLString::npos && found > 0 && found + mExtension.size() == name.size();
    if (isMatch) mFiles->emplace(name, theFile);
    return true;
}
