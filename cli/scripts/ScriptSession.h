// Scripts for the commands that compile and run them: finding languages, loading, and what failed.
#pragma once

#include <CoreServices/Components.h>
#include <OpenScripting/OSA.h>

#include <string>
#include <vector>

namespace osa::cli {

struct Language {
    std::string name;
    OSType subType = 0;
    Component component = nullptr;
};
/// All that there are, the first the one that is used when none is named.
std::vector<Language> languages();

/// Where a script bundle has its script.
std::string mainScriptOf(const std::string& bundle);

/// A descriptor that is disposed of.
struct SessionDesc {
    AEDesc desc{typeNull, nullptr};

    SessionDesc() = default;
    ~SessionDesc() { AEDisposeDesc(&desc); }
    SessionDesc(const SessionDesc&) = delete;
    SessionDesc& operator=(const SessionDesc&) = delete;
    std::string bytes() const;
};

/// One script of any language. Reasons are empty when all went well.
class ScriptSession {
  public:
    ScriptSession() = default;
    ~ScriptSession();
    ScriptSession(const ScriptSession&) = delete;
    ScriptSession& operator=(const ScriptSession&) = delete;

    /// `language` is a name in any case, or a subtype; empty for the first.
    std::string open(const std::string& language);
    /// A file in any form, or the main script of a bundle.
    std::string loadFile(const std::string& path);
    /// What such a file would hold.
    std::string loadBytes(const std::string& bytes);
    std::string loadText(const std::string& utf8);

    ComponentInstance component() const { return component_; }
    OSAID script() const { return script_; }

    /// The source of a script in a file in UTF-8, loaded if need be: a text, of whatever language,
    /// is its own.
    std::string readSource(const std::string& path, std::string& utf8);
    std::string readSourceOfBytes(const std::string& bytes, std::string& utf8);
    /// The script's source in UTF-8.
    std::string source(std::string& utf8) const;
    /// A value in UTF-8: as people read it, or as its language writes it.
    std::string display(OSAID value, bool asSource, std::string& utf8) const;
    /// Why a call of this session failed: for errors of the script what it says, and the line.
    std::string reason(OSAError status) const;
    /// The same for compiling, loading and storing, which are not stopped but refused.
    std::string makingReason(OSAError status) const;

  private:
    std::string compile(const SessionDesc& text);
    std::string scriptReason() const;
    std::string startingReason() const;
    std::string errorText(OSType selector) const;
    std::string loadingReason(OSAError status, const FSRef& file);
    std::u16string sourceUnits() const;

    ComponentInstance component_ = nullptr;
    OSAID script_ = kOSANullScript;
    std::u16string text_;  ///< what did not compile
};

/// UTF-8, valid or made so, as 'utxt'.
OSErr makeText(const std::string& utf8, AEDesc* result);

}  // namespace osa::cli
