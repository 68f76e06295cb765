// SOpenFork: an open fork that is closed with its scope.
#pragma once

#include <CoreServices/Files.h>

#include <utility>

#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

/// Throws the statuses of opening and of Close.
class SOpenFork {
  public:
    /// Owns a fork that was just opened.
    explicit SOpenFork(SInt16 opened) : mRefNum(opened) {}
    /// Opens the data fork.
    SOpenFork(const FSRef* file, SInt8 permission) {
        FailOSErr(FSOpenFork(file, 0, nullptr, permission, &mRefNum));
    }
    SOpenFork(const FSRef& file, const HFSUniStr255& name, SInt8 permission) {
        FailOSErr(FSOpenFork(&file, NameLength(name), name.unicode, permission, &mRefNum));
    }
    SOpenFork(const SOpenFork&) = delete;
    SOpenFork& operator=(const SOpenFork&) = delete;
    /// Closes it, if that was not done, without looking at the status.
    ~SOpenFork() {
        if (mRefNum > 0) FSCloseFork(mRefNum);
    }

    SInt16 RefNum() const { return mRefNum; }
    /// The number is forgotten first: it may be somebody else's afterwards.
    void Close() { FailOSErr(FSCloseFork(std::exchange(mRefNum, SInt16{0}))); }
    /// The number, which is the caller's to close.
    SInt16 Release() { return std::exchange(mRefNum, SInt16{0}); }

  private:
    SInt16 mRefNum = 0;
};
