// CDataFile on the File Manager's fork calls.
#include "Libraries/TCLClasses/CDataFile.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TBUtilities/SHandle.h"

namespace {

constexpr char kUnit[] = "Libraries/TCLClasses/CDataFile";

}  // namespace

CDataFile::CDataFile() : mRefNum(0) {}

CDataFile::~CDataFile() {
    try {
        Close();
    } catch (...) {
        // A destructor that throws would end the process.
    }
}

void CDataFile::Open(SInt8 permission) {
    TB_ASSERT(kUnit, !mFileDesc.Empty());
    TB_ASSERT(kUnit, !IsOpen());
    Close();
    ResolveFileAlias();
    FSRef ref;
    mFileDesc.GetFileSpec(&ref);
    HFSUniStr255 name;
    FailOSErr(FSGetDataForkName(&name));
    SInt16 refNum = 0;
    FailOSErr(FSOpenFork(&ref, name.length, name.unicode, permission, &refNum));
    mRefNum = refNum;
}

void CDataFile::Close() {
    if (mRefNum > 0) FailOSErr(FSCloseFork(std::exchange(mRefNum, SInt16{0})));
}

bool CDataFile::IsOpen() const {
    return mRefNum > 0;
}

void CDataFile::SetLength(SInt32 length) {
    FailOSErr(SetEOF(mRefNum, length));
}

SInt32 CDataFile::GetLength() {
    SInt32 length = 0;
    FailOSErr(GetEOF(mRefNum, &length));
    return length;
}

void CDataFile::SetMark(SInt32 offset, SInt16 mode) {
    FailOSErr(SetFPos(mRefNum, mode, offset));
}

SInt32 CDataFile::GetMark() {
    SInt32 mark = 0;
    FailOSErr(GetFPos(mRefNum, &mark));
    return mark;
}

Handle CDataFile::ReadAll() {
    TB_ASSERT(kUnit, IsOpen());
    SInt32 length = 0;
    FailOSErr(GetEOF(mRefNum, &length));
    SHandle data(NewHandle(length));
    FailNIL(data.Get());
    FailOSErr(SetFPos(mRefNum, fsFromStart, 0));
    FailOSErr(FSRead(mRefNum, &length, *data.Get()));
    return data.Release();
}

void CDataFile::ReadSome(char* info, SInt32 count) {
    TB_ASSERT(kUnit, IsOpen());
    TB_ASSERT(kUnit, info);
    FailOSErr(FSRead(mRefNum, &count, info));
}

void CDataFile::WriteAll(Handle data) {
    TB_ASSERT(kUnit, IsOpen());
    // It would pass for empty and cost the file its content.
    const char* const bytes = data == nullptr ? nullptr : *data;
    FailOSErr(bytes == nullptr ? OSErr{nilHandleErr} : OSErr{noErr});
    const Size size = GetHandleSize(data);
    SInt32 count = size;
    FailOSErr(SetFPos(mRefNum, fsFromStart, 0));
    FailOSErr(FSWrite(mRefNum, &count, bytes));
    FailOSErr(SetEOF(mRefNum, size));
    FailOSErr(FSFlushFork(mRefNum));
}

void CDataFile::WriteSome(const char* info, SInt32 count) {
    TB_ASSERT(kUnit, IsOpen());
    TB_ASSERT(kUnit, info);
    FailOSErr(FSWrite(mRefNum, &count, info));
}
