// COSAIDReader: a script, a context or a value of a scripting component, which somebody else owns.
//
// Everything throws the component's status as an OSStatus unless it says otherwise. `modeFlags` are
// the component's (OpenScripting/OSA.h) and passed on. What is asked into a CAEDesc frees it first;
// what runs into one leaves it as it was when running fails, and empty when the
// result cannot be read. Assigning to a reader disposes of nothing: it is not for a COSAID's base.
#pragma once

#include <OpenScripting/OSA.h>

#include <string>

#include "Libraries/MacToolboxLib/CAEDesc/CAEDesc.h"
#include "Libraries/MacToolboxLib/COSAID/SubroutineArguments.h"
#include "Libraries/MacToolboxLib/TBUtilities/SCoreFoundation.h"
#include "Libraries/MacToolboxLib/TCLString/TCLString.h"

class COSAID;

class COSAIDReader {
  public:
    COSAIDReader() = default;
    COSAIDReader(ComponentInstance component, OSAID id) : mID(id), mComponent(component) {}

    // Virtual, in this order: others derive from these classes, or call by slot.

    virtual ~COSAIDReader() = default;
    virtual void SetOSAID(ComponentInstance component, OSAID id);
    /// Whether the script handles 'aevt' 'odoc'.
    virtual bool HasOpenHandler() const;

    ComponentInstance GetComponent() const { return mComponent; }
    OSAID GetOSAID() const { return mID; }

    // --- Values (COSAIDReader.cpp)

    /// 'null' for none, 'scpt' for a script or context, else the value's best type. Yes and no of
    /// the component are read from an answer's most significant byte alone, as they always were: 1
    /// counts as no, and the best type tells.
    DescType GetType() const;
    bool IsText() const;
    // False for whatever cannot be asked.
    bool IsMissingValue() const;
    bool IsUndefined() const;
    bool IsFile() const;

    /// Compiles into the number held, which changes unless it is replaced in place.
    void Compile(const AEDesc* source, SInt32 modeFlags);
    /// The value as a type; the null descriptor when nothing is held, and when it fails. The
    /// descriptor is overwritten, not disposed of. Text asked for as any type, or as styled text,
    /// comes as 'utxt'. Asserts "value".
    void Get(AEDesc* value, DescType desiredType, SInt32 modeFlags) const;
    void Get(CAEDesc& value, DescType desiredType, SInt32 modeFlags) const;
    /// The source of a script: 'best' is styled text, and where 'STXT' is not to be had 'TEXT' is
    /// given. The display text of a value, as 'TEXT' whatever is asked for.
    void GetSource(AEDesc* result, DescType desiredType) const;
    void GetSource(CAEDesc& result, DescType desiredType) const;
    void GetSource(TCLString& source) const;
    void GetSource(std::string& source) const;
    void GetSource(SCoreFoundation<CFStringRef>& source) const;
    /// Where 'STXT' is not to be had, 'TEXT' is given.
    void Display(AEDesc* result, DescType desiredType, SInt32 modeFlags) const;
    void Display(CAEDesc& result, DescType desiredType, SInt32 modeFlags) const;
    void Display(TCLString& text, SInt32 modeFlags) const;
    void Display(std::string& text, SInt32 modeFlags) const;
    void Display(SCoreFoundation<CFStringRef>& text, SInt32 modeFlags) const;

    // --- Running (COSAIDExecution.cpp). A COSAID that gets a result is freed first, so that it is
    // empty when running fails, and must be of the same component: "result.GetComponent() ==
    // mComponent", and "parent.GetComponent() == mComponent" for the script that it runs in, are
    // asserted, and the process ends when they fail. ExecuteEvent does not look.

    void Execute(SInt32 modeFlags) const;
    void Execute(COSAID& result, SInt32 modeFlags) const;
    void Execute(CAEDesc& result, SInt32 modeFlags) const;
    void Execute(const COSAIDReader& parent, COSAID& result, SInt32 modeFlags) const;
    void Execute(const COSAIDReader& parent, CAEDesc& result, SInt32 modeFlags) const;
    void ExecuteEvent(const AEDesc* event, COSAID& result, SInt32 modeFlags) const;
    void ExecuteEvent(const AEDesc* event, CAEDesc& result, SInt32 modeFlags) const;
    void ExecuteEvent(const AEDesc* event, SInt32 modeFlags) const;

    // --- Handlers (COSAIDHandlers.cpp)

    /// Calls the handler `name` (bytes as they are) with up to five parameters, each a
    /// CAEDescReader, and then the mode flags:
    ///     script.CallFunction("add", sum, first, second, kOSAModeNull);
    template <typename... Arguments>
    void CallFunction(const char* name, COSAID& result, const Arguments&... arguments) const {
        CallSubroutine(name, result, SubroutineArguments(arguments...));
    }
    template <typename... Arguments>
    void CallFunction(const char* name, CAEDesc& result, const Arguments&... arguments) const {
        CallSubroutine(name, result, SubroutineArguments(arguments...));
    }
    /// The same, its result dropped.
    template <typename... Arguments>
    void Call(const char* name, const Arguments&... arguments) const {
        CallSubroutine(name, SubroutineArguments(arguments...));
    }
    /// With a name of any type, and the list of parameters as it is.
    void CallFunctionParamList(const CAEDescReader& name, COSAID& result,
                               const CAEDescReader& params, SInt32 modeFlags) const;
    void CallFunctionParamList(const CAEDescReader& name, CAEDesc& result,
                               const CAEDescReader& params, SInt32 modeFlags) const;

    // What these give is the caller's. A name that the component takes for none (paramErr) is asked
    // for again as "|name|", again and again while it fits.

    void GetHandler(const unsigned char* name, OSAID* handler) const;
    void GetProperty(const unsigned char* name, OSAID* value) const;
    /// 'TEXT' is asked for again as "|name|" by its first 255 bytes.
    void GetProperty(const AEDesc* name, OSAID* value) const;
    /// False for whatever cannot be asked.
    bool HasHandler(AEEventClass eventClass, AEEventID eventID) const;
    /// Whether the script would take the event: any script takes 'aevt' 'oapp'. False for what is
    /// no event; throws for a subroutine event without name.
    bool HasHandler(const AEDesc* event) const;

    // --- Storing (COSAIDStoring.cpp): with its source, or so that it only runs.

    void Store(AEDesc* result, bool withSource) const;
    void Store(CAEDesc& result, bool withSource) const;

    // Into the resource 'scpt' 128 of a file, in place of an older one; other resources stay. A
    // file that is not there is made, of type 'osas' and the creator; so is a missing resource
    // fork. The file is named by the text of its URL, by folder and name, by FSSpec; or by its
    // reference: then it must have a resource fork.
    //   fnfErr, memFullErr  the URL is none of a file in a folder that exists
    //   errFSBadFSRef       the file cannot be made
    //   rmvResFailed        the old resource is protected; it stays
    // Reading and removing the old resource and writing the file tell their errors; a resource that
    // cannot be added tells none. When storing fails half-way the old resource may be gone. A file
    // that the program has open for writing is closed by it, and then no more the current one.

    void Store(UInt16 length, const UniChar* url, OSType creator, bool withSource) const;
    void Store(const FSRef* parent, const HFSUniStr255* name, OSType creator,
               bool withSource) const;
    void Store(const FSSpec* spec, OSType creator, bool withSource) const;
    void Store(const FSRef* file, bool withSource) const;

    // The same into the whole data fork. An existing file's type and creator stay. When storing
    // fails half-way the fork may be empty.

    void StoreDF(UInt16 length, const UniChar* url, OSType creator, bool withSource) const;
    void StoreDF(const FSRef* parent, const HFSUniStr255* name, OSType creator,
                 bool withSource) const;
    void StoreDF(const FSSpec* spec, OSType creator, bool withSource) const;
    void StoreDF(const FSRef* file, bool withSource) const;

  protected:
    OSAID mID = kOSANullScript;
    ComponentInstance mComponent = nullptr;

  private:
    /// The number of `result`, freed, for a call that gives one.
    static OSAID* NumberOf(COSAID& result);
    void CallSubroutine(const char* name, COSAID& result, const SubroutineArguments& call) const;
    void CallSubroutine(const char* name, CAEDesc& result, const SubroutineArguments& call) const;
    void CallSubroutine(const char* name, const SubroutineArguments& call) const;
    OSStatus LookUpHandler(const CAEDescReader& name) const;
    void StoreResource(SInt16 file, bool withSource) const;
    void StoreDataFork(SInt16 fork, bool withSource) const;
};
