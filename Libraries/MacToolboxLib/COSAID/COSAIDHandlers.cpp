// Calling handlers, and looking handlers and properties up.
#include <CoreServices/MacErrors.h>
#include <CoreServices/Processes.h>

#include <array>
#include <cstring>

#include "Libraries/MacToolboxLib/COSAID/COSAID.h"
#include "Libraries/MacToolboxLib/COSAID/COSAIDSupport.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr unsigned char kLongestWrapped = 253;

CAEDesc TextDesc(const char* text) {
    CAEDesc desc;
    desc.Set(typeChar, text, static_cast<SInt32>(std::strlen(text)));
    return desc;
}

/// The event by which a component calls a handler; without parameters when the list is null.
CAEDesc SubroutineEvent(const CAEDescReader& name, const CAEDescReader* parameters) {
    const ProcessSerialNumber self = {0, kCurrentProcess};
    const CAEDesc target(&self);
    CAEDesc event;
    FailOSErr(AECreateAppleEvent(kASAppleScriptSuite, kASSubroutineEvent, &target.GetDesc(),
                                 kAutoGenerateReturnID, kAnyTransactionID, event.Receive()));
    event.SetProperty(keyASSubroutineName, name);
    if (parameters != nullptr) event.SetProperty(keyDirectObject, *parameters);
    return event;
}

CAEDesc SubroutineEvent(const char* name, const SubroutineArguments& call) {
    const CAEDesc text = TextDesc(name);
    if (call.Parameters().empty()) return SubroutineEvent(text, nullptr);
    CAEDesc list;
    list.MakeList();
    for (const CAEDescReader* const parameter : call.Parameters()) list.AppendItem(*parameter);
    return SubroutineEvent(text, &list);
}

/// A handler's name by its event: both codes, big-endian.
CAEDesc EventName(AEEventClass eventClass, AEEventID eventID) {
    std::array<char, 8> bytes;
    for (unsigned i = 0; i < 4; ++i) {
        bytes[i] = static_cast<char>(eventClass >> (24 - 8 * i));
        bytes[4 + i] = static_cast<char>(eventID >> (24 - 8 * i));
    }
    CAEDesc name;
    name.Set('evnt', bytes.data(), bytes.size());
    return name;
}

/// A Pascal string with "|" around it, whose length byte may wrap around.
class WrappedName {
  public:
    explicit WrappedName(const unsigned char* name) {
        const unsigned length = name[0];
        std::memcpy(mName.data() + 2, name + 1, length);
        mName[0] = static_cast<unsigned char>(length + 2);
        mName[1] = mName[length + 2] = '|';
    }
    const unsigned char* Get() const { return mName.data(); }

  private:
    std::array<unsigned char, 260> mName{};
};

/// `lookUp`, given a name, as long as the component takes the name for none and a longer one fits.
/// Its status counts in 16 bits.
template <typename LookUp>
void LookUpByName(const unsigned char* name, LookUp lookUp) {
    const CAEDesc text(name);
    const auto status = static_cast<SInt16>(lookUp(text));
    if (status == paramErr && name[0] <= kLongestWrapped) {
        LookUpByName(WrappedName(name).Get(), lookUp);
    } else {
        FailOSErr(status);
    }
}

OSType CodeAttribute(const AEDesc* event, AEKeyword keyword, bool& isThere) {
    DescType type = 0;
    OSType code = 0;
    Size size = 0;
    isThere =
        AEGetAttributePtr(event, keyword, typeType, &type, &code, sizeof code, &size) == noErr;
    return code;
}

}  // namespace

void COSAIDReader::CallSubroutine(const char* name, COSAID& result,
                                  const SubroutineArguments& call) const {
    ExecuteEvent(&SubroutineEvent(name, call).GetDesc(), result, call.ModeFlags());
}

void COSAIDReader::CallSubroutine(const char* name, CAEDesc& result,
                                  const SubroutineArguments& call) const {
    COSAID value(mComponent);
    CallSubroutine(name, value, call);
    result = value;
}

void COSAIDReader::CallSubroutine(const char* name, const SubroutineArguments& call) const {
    ExecuteEvent(&SubroutineEvent(name, call).GetDesc(), call.ModeFlags());
}

void COSAIDReader::CallFunctionParamList(const CAEDescReader& name, COSAID& result,
                                         const CAEDescReader& params, SInt32 modeFlags) const {
    ExecuteEvent(&SubroutineEvent(name, &params).GetDesc(), result, modeFlags);
}

void COSAIDReader::CallFunctionParamList(const CAEDescReader& name, CAEDesc& result,
                                         const CAEDescReader& params, SInt32 modeFlags) const {
    COSAID value(mComponent);
    CallFunctionParamList(name, value, params, modeFlags);
    result = value;
}

OSStatus COSAIDReader::LookUpHandler(const CAEDescReader& name) const {
    COSAID handler(mComponent);
    return OSAGetHandler(mComponent, kOSAModeNull, mID, &name.GetDesc(), NumberOf(handler));
}

bool COSAIDReader::HasHandler(AEEventClass eventClass, AEEventID eventID) const {
    try {
        return mID != kOSANullScript && LookUpHandler(EventName(eventClass, eventID)) == noErr;
    } catch (...) {
        return false;
    }
}

bool COSAIDReader::HasHandler(const AEDesc* event) const {
    if (mID == kOSANullScript) return false;
    bool hasClass = false;
    bool hasID = false;
    const AEEventClass eventClass = CodeAttribute(event, keyEventClassAttr, hasClass);
    const AEEventID eventID = CodeAttribute(event, keyEventIDAttr, hasID);
    if (!hasClass || !hasID) return false;
    if (eventClass == kASAppleScriptSuite && eventID == kASSubroutineEvent) {
        const CAEDesc name(event, keyASSubroutineName, typeWildCard);
        return static_cast<SInt16>(LookUpHandler(name)) == noErr;
    }
    if (eventClass == 'aevt' && eventID == 'oapp') return true;
    if (eventClass == 'aevt' && eventID == 'odoc') return HasOpenHandler();
    return static_cast<SInt16>(LookUpHandler(EventName(eventClass, eventID))) == noErr;
}

bool COSAIDReader::HasOpenHandler() const {
    if (mID == kOSANullScript) return false;
    SInt32 answer = 0;
    FailOSErr(OSAGetScriptInfo(mComponent, mID, kASHasOpenHandler, &answer));
    return answer != 0;
}

void COSAIDReader::GetHandler(const unsigned char* name, OSAID* handler) const {
    LookUpByName(name, [&](const CAEDesc& text) {
        return OSAGetHandler(mComponent, kOSAModeNull, mID, &text.GetDesc(), handler);
    });
}

void COSAIDReader::GetProperty(const unsigned char* name, OSAID* value) const {
    LookUpByName(name, [&](const CAEDesc& text) {
        return OSAGetProperty(mComponent, kOSAModeNull, mID, &text.GetDesc(), value);
    });
}

void COSAIDReader::GetProperty(const AEDesc* name, OSAID* value) const {
    const auto status =
        static_cast<SInt16>(OSAGetProperty(mComponent, kOSAModeNull, mID, name, value));
    if (status == paramErr && name != nullptr && name->descriptorType == typeChar) {
        Str255 text;
        CAEDescReader(*name).GetStr255(text);
        GetProperty(WrappedName(text).Get(), value);
        return;
    }
    FailOSErr(status);
}
