// CDataFile: the file object for the data fork, read and written whole or in pieces.
#pragma once

#include "Libraries/TCLClasses/CFile.h"

/// Lengths and positions are bytes. Every status of the File Manager is thrown, eofErr of a read
/// that comes out short too.
class CDataFile : public CFile {
  public:
    CDataFile();
    /// Closes the file; a failure to is lost with it.
    ~CDataFile() override;

    /// Asserts "!mFileDesc.Empty()" and "!IsOpen()". Follows an alias, whose failure is thrown.
    /// `permission` is the File Manager's.
    void Open(SInt8 permission) override;
    /// Leaves the object closed also when it throws. Does nothing to a closed one.
    void Close() override;
    bool IsOpen() const override;

    // Slots of this class, in their order.
    virtual void SetLength(SInt32 length);
    virtual SInt32 GetLength();
    /// `mode` is one of the File Manager's, fsFromStart for a start.
    virtual void SetMark(SInt32 offset, SInt16 mode);
    virtual SInt32 GetMark();
    /// The whole fork in a handle that the caller owns and gives back with DisposeAHandle. Asserts
    /// "IsOpen()", as the three below.
    virtual Handle ReadAll();
    /// Exactly `count` bytes at the mark. Asserts "info", the buffer.
    virtual void ReadSome(char* info, SInt32 count);
    /// Makes the bytes of the caller's handle the whole fork, on disk when this returns. A failure
    /// leaves a part of them. nilHandleErr, and nothing written, for null and for a handle without
    /// a block.
    virtual void WriteAll(Handle data);
    /// At the mark. Asserts "info".
    virtual void WriteSome(const char* info, SInt32 count);

  protected:
    SInt16 mRefNum;
};
