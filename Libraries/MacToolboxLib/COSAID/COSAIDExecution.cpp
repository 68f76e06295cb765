// Running scripts and sending them events.
#include <cstdio>
#include <cstdlib>

#include "Libraries/MacToolboxLib/COSAID/COSAID.h"
#include "Libraries/MacToolboxLib/COSAID/COSAIDSupport.h"
#include "Libraries/MacToolboxLib/TBUtilities/Assertions.h"
#include "Libraries/MacToolboxLib/TBUtilities/Failures.h"

namespace {

constexpr unsigned kParentLine = 1137;
constexpr unsigned kResultWithParentLine = 1138;
constexpr unsigned kResultLine = 1162;

/// A number of another component would mean something else there: nothing may run with it.
void RequireComponent(bool isSame, unsigned line, const char* condition) {
    if (isSame) return;
    ReportFailedAssertion(kCOSAIDUnit, line, condition);
    std::fflush(nullptr);
    std::abort();
}

}  // namespace

// Before the call that fills it: this object, or the parent, may be the result.
OSAID* COSAIDReader::NumberOf(COSAID& result) {
    result.Free();
    return &result.mID;
}

void COSAIDReader::Execute(SInt32 modeFlags) const {
    COSAID result(mComponent);
    Execute(result, modeFlags);
}

void COSAIDReader::Execute(COSAID& result, SInt32 modeFlags) const {
    RequireComponent(result.GetComponent() == mComponent, kResultLine,
                     "result.GetComponent() == mComponent");
    OSAID* const received = NumberOf(result);
    FailOSErr(OSAExecute(mComponent, mID, kOSANullScript, modeFlags, received));
}

void COSAIDReader::Execute(CAEDesc& result, SInt32 modeFlags) const {
    COSAID value(mComponent);
    Execute(value, modeFlags);
    result = value;
}

void COSAIDReader::Execute(const COSAIDReader& parent, COSAID& result, SInt32 modeFlags) const {
    RequireComponent(parent.GetComponent() == mComponent, kParentLine,
                     "parent.GetComponent() == mComponent");
    RequireComponent(result.GetComponent() == mComponent, kResultWithParentLine,
                     "result.GetComponent() == mComponent");
    OSAID* const received = NumberOf(result);
    FailOSErr(OSAExecute(mComponent, mID, parent.GetOSAID(), modeFlags, received));
}

void COSAIDReader::Execute(const COSAIDReader& parent, CAEDesc& result, SInt32 modeFlags) const {
    COSAID value(mComponent);
    Execute(parent, value, modeFlags);
    result = value;
}

void COSAIDReader::ExecuteEvent(const AEDesc* event, COSAID& result, SInt32 modeFlags) const {
    OSAID* const received = NumberOf(result);
    FailOSErr(OSAExecuteEvent(mComponent, event, mID, modeFlags, received));
}

void COSAIDReader::ExecuteEvent(const AEDesc* event, CAEDesc& result, SInt32 modeFlags) const {
    COSAID value(mComponent);
    ExecuteEvent(event, value, modeFlags);
    result = value;
}

void COSAIDReader::ExecuteEvent(const AEDesc* event, SInt32 modeFlags) const {
    COSAID value(mComponent);
    ExecuteEvent(event, value, modeFlags);
}
