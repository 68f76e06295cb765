// Copying forks. What a fork held is kept aside meanwhile, and put back when copying fails.
#include "Libraries/MacToolboxLib/TBUtilities/CopyFork.h"

#include <CoreServices/Folders.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <memory>
#include <optional>
#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SOpenFork.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"
#include "fsextensions/FSExtensions.h"

namespace {

constexpr UInt32 kLargestBuffer = 32768;

struct PtrDisposer {
    void operator()(void* block) const { DisposePtr(static_cast<Ptr>(block)); }
};

struct TransferBuffer {
    TransferBuffer() : mBlock(GetTempBuffer(kLargestBuffer, &mSize)) { FailNIL(mBlock.get()); }
    OSStatus Copy(SInt16 from, SInt16 to) const {
        return FSCopyFork(from, to, mBlock.get(), mSize);
    }

  private:
    UInt32 mSize = 0;
    std::unique_ptr<void, PtrDisposer> mBlock;
};

/// An empty file in the temporary folder, which is gone with this.
class ScratchFile {
  public:
    ScratchFile() {
        FSRef folder;
        FailOSErr(FSFindFolder(kUserDomain, kTemporaryFolderType, kCreateFolder, &folder));
        OSErr status = dupFNErr;
        for (UInt32 number = TickCount(); status == dupFNErr; ++number) {
            HFSUniStr255 name;
            FromTCLString(ToTCLString("Fork Copy ", kCFStringEncodingASCII) +
                              ToTCLString(static_cast<SInt32>(number)),
                          name);
            status = FSCreateFileUnicode(&folder, NameLength(name), name.unicode, kFSCatInfoNone,
                                         nullptr, &mFile, nullptr);
        }
        FailOSErr(status);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { Delete(); }

    const FSRef& Get() const { return mFile; }
    /// Where an open file can do without a name it is not left behind by a crash, either.
    void Delete() {
        if (!mIsGone) mIsGone = FSDeleteObject(&mFile) == noErr;
    }

  private:
    FSRef mFile;
    bool mIsGone = false;
};

/// What a fork held before it was written to.
class OldContent {
  public:
    OldContent(const FSRef& file, const HFSUniStr255& forkName, const TransferBuffer& buffer) {
        SOpenFork fork(file, forkName, fsRdPerm);
        SInt64 size = 0;
        FailOSErr(FSGetForkSize(fork.RefNum(), &size));
        if (size == 0) return;
        HFSUniStr255 dataForkName;
        FailOSErr(FSGetDataForkName(&dataForkName));
        mFile.emplace();
        mFork.emplace(mFile->Get(), dataForkName, SInt8{fsRdWrPerm});
        mFile->Delete();
        FailOSErr(buffer.Copy(fork.RefNum(), mFork->RefNum()));
    }
    OSStatus PutBack(SInt16 target, const TransferBuffer& buffer) const {
        return mFork ? buffer.Copy(mFork->RefNum(), target) : FSSetForkSize(target, fsFromStart, 0);
    }

  private:
    std::optional<ScratchFile> mFile;
    std::optional<SOpenFork> mFork;  // closed before the file is deleted
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
    const TransferBuffer buffer;
    const OSErr created = FSCreateFork(&file, NameLength(forkName), forkName.unicode);
    if (created != errFSForkExists) FailOSErr(created);
    SOpenFork from(source.GetFSRef(), forkName, fsRdPerm);
    SOpenFork to(file, forkName, fsWrPerm);
    const OldContent old(file, forkName, buffer);
    const OSStatus copied = buffer.Copy(from.RefNum(), to.RefNum());
    if (copied != noErr) old.PutBack(to.RefNum(), buffer);
    FailOSErr(copied);
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
