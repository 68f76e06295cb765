// What is known of the last error of a script, and OSAScriptError's answers from it.
#pragma once

#include <CoreServices/AEDataModel.h>

#include <optional>
#include <string>
#include <string_view>

#include "platform/osa/javascript/machine/Engine.h"

namespace osa::script {

/// The source that an error may lie in; `file` is the name that the engine knows it by, and no
/// other source by the same.
struct SourceText {
    explicit SourceText(std::u16string source);
    std::string file;
    std::u16string text;
};

class ScriptError {
  public:
    /// Takes the pending exception, which is cleared. `source` may be null.
    void take(JSContext* cx, const SourceText* source);
    /// For OSAScriptError: errAEDescNotFound for what is not known.
    OSErr answer(OSType selector, DescType type, AEDesc* result) const;

  private:
    struct Range {
        SInt32 start, end;
    };
    void takeReport(JSContext* cx, const JSErrorReport& report, const SourceText* source);
    OSErr answerRange(DescType type, AEDesc* result) const;
    OSErr answerNumber(DescType type, AEDesc* result) const;

    bool known_ = false;
    SInt32 number_ = 0;
    std::u16string message_, brief_;
    std::optional<Range> range_;
};

}  // namespace osa::script
