// CAEDescReader: a read-only view of one Apple event descriptor, which somebody else owns.
#pragma once

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>

#include <string>

#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

class CAEDesc;

/// Never disposes of the descriptor, and never changes when an operation fails; neither do the
/// objects that an operation hands its result to. Failures are thrown as OSStatus: whatever the
/// Apple Event Manager answers, errAECorruptData for data that is shorter than its type, memFullErr
/// when a platform object cannot be made.
///
/// A getter takes the descriptor in whatever type it comes. Types that it knows are read as they
/// are; any other is coerced to the first of the getter's target types that does not answer
/// errAECoercionFail. Narrowing is silent: no getter checks a range.
class CAEDescReader {
  public:
    CAEDescReader() : mDesc{typeNull, nullptr} {}
    /// A view of `desc`'s data, which must outlive the reader.
    explicit CAEDescReader(const AEDesc& desc) : mDesc(desc) {}

    /// The descriptor that is viewed, borrowed.
    const AEDesc& GetDesc() const { return mDesc; }
    DescType GetType() const { return mDesc.descriptorType; }
    bool Is(DescType type) const { return mDesc.descriptorType == type; }
    /// Whether the type is 'null' or there is no data.
    bool Empty() const { return Is(typeNull) || mDesc.dataHandle == nullptr; }

    /// Throws a non-zero status.
    void FailOSErr(OSStatus status) const;

    // --- Values (CAEDescValues.cpp)

    bool GetBool() const;
    SInt16 GetShort() const;
    UInt16 GetUShort() const;
    SInt32 GetLong() const;
    UInt32 GetULong() const;
    /// 64 bits of a 'comp' only: everything else is read by GetLong.
    SInt64 GetLongLong() const;
    /// 'long' and 'shor' are taken as they are, without a shift into fixed-point form; the other
    /// types by value.
    Fixed GetFixed() const;
    double GetDouble() const;
    float GetFloat() const;
    OSType GetEnumeration() const;
    OSType GetTypeType() const;
    /// Seconds.
    SInt64 GetLongDateTime() const;
    /// A list of three is red, green, blue.
    void GetRGBColor(RGBColor* color) const;
    /// A list of four is left, top, right, bottom.
    void GetQDRect(Rect* rect) const;
    /// A list of two is horizontal, vertical.
    void GetQDPoint(Point* point) const;

    // --- Strings (CAEDescStrings.cpp). What the caller gets from a CFStringRef*, a
    // CFMutableStringRef*, GetCFData, or a Copy belongs to the caller.

    void GetString(TCLString& string) const;
    /// UTF-8 of 'utxt', the data of 'TEXT', 'aprl', 'furl' and 'utf8' as they are, and any other
    /// type as 'TEXT'.
    void GetString(std::string& string) const;
    /// 'TEXT' is read in the system encoding, 'aprl', 'furl' and 'bund' as UTF-8.
    void GetString(CFStringRef* string) const;
    void GetString(SCoreFoundation<CFStringRef>& string) const;
    /// `maxLength` becomes the mutable string's maximum length; 0 is none.
    void GetString(CFMutableStringRef* string, SInt32 maxLength) const;
    void GetString(SCoreFoundation<CFMutableStringRef>& string, SInt32 maxLength) const;
    /// UTF-8, but the data of 'TEXT', 'aprl', 'furl' and 'utf8' as they are.
    void GetStringData(std::string& data) const;
    CFDataRef GetCFData() const CF_RETURNS_RETAINED;
    /// A Pascal string in the system encoding, cut silently to `maxLength` bytes (never over 255).
    void GetPString(unsigned char* buffer, SInt32 maxLength) const;
    void GetStr32(unsigned char* buffer) const { GetPString(buffer, 32); }
    void GetStr100(unsigned char* buffer) const { GetPString(buffer, 100); }
    void GetStr255(unsigned char* buffer) const { GetPString(buffer, 255); }
    /// At most `size` bytes, the zero at the end included.
    void GetCString(char* buffer, SInt32 size) const;
    /// A new block (DisposePtr) ended by a zero.
    char* CopyCString() const;

    // --- The data as it is

    /// At most `size` bytes.
    void GetData(char* buffer, SInt32 size) const;
    /// A new block (DisposePtr).
    char* CopyPtr() const;
    /// A new handle (DisposeHandle).
    Handle CopyHandle() const;

    // --- Classification

    bool IsText() const;
    /// Whether it is the type code 'undf', 'msng', or can be coerced to it.
    bool IsUndefined() const;
    bool IsMissingValue() const;
    /// Whether it is a list or record without items.
    bool EmptyList() const;
    /// Whether it names a file: by its type, or as an object specifier of a file by name without a
    /// container.
    bool IsFile() const;

    // --- Items, fields and attributes (CAEDescItems.cpp)

    SInt32 CountItems() const;
    /// `index` is counted from 1; errAEIllegalIndex outside.
    void GetItem(SInt32 index, CAEDesc& out, DescType type) const;
    void AppendItem(const CAEDescReader& item);
    AEKeyword GetPropertyKeyword(SInt32 index) const;
    /// errAEDescNotFound when there is none; so for attributes.
    void GetProperty(AEKeyword key, CAEDesc& out, DescType type) const;
    void SetProperty(AEKeyword key, const CAEDescReader& value);
    void SetProperty(AEKeyword key, DescType type, const char* data, SInt32 size);
    void GetAttribute(AEKeyword key, CAEDesc& out, DescType type) const;
    void SetAttribute(AEKeyword key, const CAEDescReader& value);
    /// A copy of the descriptor as `type`, in `out`.
    void CoerceTo(DescType type, CAEDesc& out) const;
    /// The first 8 bytes of the data, class and ID as they lie there.
    void GetEventIdentifier(unsigned char* buffer) const;
    SInt32 GetReturnID() const;

    /// Appends every item to `list`.
    void CopyItems(CAEDesc& list) const;
    /// Sets every field in `record`.
    void CopyProperties(CAEDescReader& record) const;
    /// Sets a field for each of the usual attributes that this event has.
    void CopyAttributesToRecord(CAEDescReader& record) const;
    /// Gives `event` each of the usual attributes that this event, or this record as a field, has.
    void CopyAttributes(CAEDescReader& event) const;

    // --- Files, applications and processes (CAEDescLocations.cpp)

    /// The reference of the object that the descriptor names. Applications are looked up; text is a
    /// path, in the POSIX style when it begins with "/", in the HFS style when it holds ":".
    ///   fnfErr                  the URL of a missing object
    ///   cfStringConversionErr   a path that leads nowhere
    ///   errAECoercionFail       it names no file
    void GetFileSpec(FSRef* ref) const;
    /// The containing folder's reference (for 'fsrf': the object's own) and the leaf name, which
    /// works for a URL of a missing object too. fnfErr when the parent is not there.
    void GetFileSpec(FSRef* ref, HFSUniStr255* name) const;
    /// An application by reference or by the text of a URL.
    void GetAppFileSpec(FSRef* ref) const;
    /// The URL that the descriptor holds; the caller releases it. Text is read as a URL.
    CFURLRef GetCFURL() const CF_RETURNS_RETAINED;
    /// The creator of the application or file.
    OSType GetSignature() const;
    /// procNotFound when no process has the signature.
    ProcessSerialNumber GetPSN() const;

  protected:
    AEDesc mDesc;

  private:
    void CoerceExactly(DescType type, CAEDesc& out) const;
    void CoerceToText(DescType type, bool alsoWhenImpossible, CAEDesc& out) const;
    void GetTextBytes(std::string& bytes) const;
    void GetPathSpec(FSRef* ref) const;
    void GetCoercedFileSpec(FSRef* ref) const;
    bool HoldsCode(OSType code) const;
    bool IsFileSpecifier() const;
};
