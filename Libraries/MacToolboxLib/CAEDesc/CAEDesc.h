// CAEDesc: the owning Apple event descriptor.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreServices/Aliases.h>
#include <NavigationServices/Navigation.h>

#include <type_traits>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDescReader.h"

class COSAIDReader;

/// Disposes of its data once, in the destructor or before it is replaced. Operations that replace
/// the content empty the object first: a failure then leaves it empty, and what they are given must
/// not lie in the object's own data. Failures are thrown as OSStatus.
class CAEDesc : public CAEDescReader {
  public:
    /// Slots: the destructor, then Free.
    virtual ~CAEDesc();
    /// Disposes of the data and leaves 'null'. Without data nothing happens and the type stays.
    virtual void Free();

    /// Only to be read: 'bool' descriptors of 1 and 0, and the empty descriptor.
    static const CAEDesc sTrue;
    static const CAEDesc sFalse;
    static const CAEDesc sEmpty;

    CAEDesc() = default;
    CAEDesc(const CAEDesc& other) : CAEDescReader() { Copy(&other.mDesc); }
    explicit CAEDesc(const CAEDescReader& other) { Copy(&other.GetDesc()); }
    /// 'bool', one byte.
    explicit CAEDesc(bool b);
    /// 'psn '.
    explicit CAEDesc(const ProcessSerialNumber* psn);
    /// 'TEXT' of a Pascal string.
    explicit CAEDesc(const unsigned char* pstr);
    /// No other pointer is taken for a Boolean.
    template <typename T>
    requires(!std::is_same_v<std::remove_cv_t<T>, ProcessSerialNumber> &&
             !std::is_same_v<std::remove_cv_t<T>, unsigned char>) explicit CAEDesc(T*) = delete;
    /// A copy of the handle's content, which is locked meanwhile.
    CAEDesc(DescType type, Handle handle);
    /// The event's parameter as `desiredType`.
    CAEDesc(const AEDesc* event, AEKeyword keyword, DescType desiredType);
    /// What the script gives, as whatever type it is. (Defined with the scripts.)
    explicit CAEDesc(const COSAIDReader& script);

    CAEDesc& operator=(const CAEDesc& other);
    CAEDesc& operator=(const CAEDescReader& other);
    /// Defined with the scripts.
    CAEDesc& operator=(const COSAIDReader& script);

    /// `size` bytes of `data` as `type`.
    void Set(DescType type, const char* data, SInt32 size);
    /// The handle's content, which is locked meanwhile.
    void Set(DescType type, Handle handle);
    /// Frees, and gives the wrapped descriptor to one call, at once, that fills it.
    AEDesc* Receive() {
        Free();
        return &mDesc;
    }
    /// 'utxt' of the string's units; null only empties the descriptor.
    void SetString(CFStringRef s);

    /// A duplicate of `source`; the object's own descriptor is left as it is.
    void Copy(const AEDesc* source);
    /// Takes over the other's content and leaves the other empty. Its own old content is gone
    /// first, so an object cannot acquire itself.
    void Aquire(CAEDesc& other);
    /// An empty list.
    void MakeList();

    /// Coerces in place; on failure the old content stays.
    void CoerceTo(DescType type);
    /// `source` as `type`.
    void CoerceTo(const AEDesc* source, DescType type);
    using CAEDescReader::CoerceTo;

    // --- Files (CAEDescFiles.cpp)

    /// 'alis' of a record, or of a new minimal one for the object.
    void SetAlias(AliasHandle alias);
    void SetAlias(const FSRef* ref);
    /// 'fss '.
    void SetFSSpec(const FSRef* ref);
    /// 'furl' of the URL.
    void SetCFURL(CFURLRef url);
    /// 'furl' of the object; memFullErr when it has no URL.
    void SetCFURL(const FSRef* ref);
    /// 'furl' of the child `name` of `parent`, which need not exist.
    void SetCFURL(const FSRef* parent, const HFSUniStr255* name);
    /// 'furl' of what a save dialog's answer names.
    void SetCFURL(const NavReplyRecord* reply);
    /// A file descriptor of a type: 'fsrf', 'fss ' and 'alis' are those; the text types give the
    /// HFS path, a folder's with ":" at its end, where 'TEXT' and 'ctxt' give it as 'utxt'; any
    /// other type gives 'furl'.
    void SetFileSpec(const FSRef* ref, DescType type);

  private:
    void Clear();
    void CopyContent(DescType type, Handle handle);
    void SetPath(const FSRef* ref);
};
