// Copying forks.
#include "Libraries/MacToolboxLib/TBUtilities/CopyFork.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <memory>
#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr UInt32 kLargestBuffer = 32768;

/// An open fork, closed at the latest when an exception passes.
class OpenFork {
  public:
    OpenFork(const FSRef& ref, const HFSUniStr255& name, SInt8 permission) {
        FailOSErr(FSOpenFork(&ref, NameLength(name), name.unicode, permission, &mRefNum));
    }
    OpenFork(const OpenFork&) = delete;
    OpenFork& operator=(const OpenFork&) = delete;
    ~OpenFork() {
        if (mRefNum > 0) FSCloseFork(mRefNum);
    }

    SInt16 Get() const { return mRefNum; }
    void Close() { FailOSErr(FSCloseFork(std::exchange(mRefNum, SInt16{0}))); }

  private:
    SInt16 mRefNum = 0;
};

struct PtrDisposer {
    void operator()(void* block) const { DisposePtr(static_cast<Ptr>(block)); }
};

FSRef DestinationFile(const FSRef& folder, const HFSUniStr255& name) {
    FSRef file;
    const OSErr status = FSCreateFileUnicode(&folder, NameLength(name), name.unicode,
                                             kFSCatInfoNone, nullptr, &file, nullptr);
    if (status != dupFNErr) {
        FailOSErr(status);
        return file;
    }
    FailOSErr(
        FSMakeFSRefUnicode(&folder, NameLength(name), name.unicode, kTextEncodingUnknown, &file));
    return file;
}

}  // namespace

void CopyFork(const CFileSpec& source, const CFileSpec& destFolder, const HFSUniStr255& destName,
              const HFSUniStr255& forkName) {
    const FSRef file = DestinationFile(destFolder.GetFSRef(), destName);
    // Opened for reading and writing at once it would be emptied before it is read.
    if (FSCompareFSRefs(&source.GetFSRef(), &file) == noErr) FailOSErr(opWrErr);
    UInt32 bufferSize = 0;
    const std::unique_ptr<void, PtrDisposer> buffer(GetTempBuffer(kLargestBuffer, &bufferSize));
    FailNIL(buffer.get());
    const OSErr created = FSCreateFork(&file, NameLength(forkName), forkName.unicode);
    if (created != errFSForkExists) FailOSErr(created);
    OpenFork from(source.GetFSRef(), forkName, fsRdPerm);
    OpenFork to(file, forkName, fsWrPerm);
    FailOSErr(FSCopyFork(from.Get(), to.Get(), buffer.get(), bufferSize));
    to.Close();
    from.Close();
}

void CopyDataFork(const CFileSpec& source, const CFileSpec& destFolder,
                  const HFSUniStr255& destName) {
    HFSUniStr255 forkName;
    FailOSErr(FSGetDataForkName(&forkName));
    CopyFork(source, destFolder, destName, forkName);
}

void CopyResourceFork(const CFileSpec& source, const CFileSpec& destFolder,
                      const HFSUniStr255& destName) {
    HFSUniStr255 forkName;
    FailOSErr(FSGetResourceForkName(&forkName));
    CopyFork(source, destFolder, destName, forkName);
}
