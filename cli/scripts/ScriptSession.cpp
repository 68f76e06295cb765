// Scripts for the commands: loading them, and why that failed.
#include "cli/scripts/ScriptSession.h"

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/ScriptingComponents.h>
#include <OpenScripting/OSAGeneric.h>
#include <strings.h>

#include <algorithm>

#include "cli/Command.h"
#include "cli/RecordFormat.h"
#include "cli/ResourceSelector.h"

namespace osa::cli {
namespace {

std::string nameOf(Component component) {
    const Handle name = NewHandle(0);
    std::string text;
    if (name != nullptr && GetComponentInfo(component, nullptr, name, nullptr, nullptr) == noErr) {
        const auto* const pascal = reinterpret_cast<const unsigned char*>(*name);
        text = macRomanText(pascal + 1, pascal[0]);
    }
    if (name != nullptr) DisposeHandle(name);
    return text;
}

std::string findFile(const std::string& path, FSRef& file) {
    Boolean isFolder = 0;
    auto find = [&](const std::string& at) {
        return FSPathMakeRef(reinterpret_cast<const UInt8*>(at.c_str()), &file, &isFolder);
    };
    if (const OSStatus status = find(path); status != noErr) return readingReason(status);
    if (isFolder == 0) return {};
    return find(mainScriptOf(path)) == noErr && isFolder == 0 ? "" : "is a folder, but no script";
}

/// 'utxt' data.
std::u16string unitsOf(const std::string& data) {
    std::u16string units(data.size() / sizeof(char16_t), u'\0');
    std::copy_n(data.data(), units.size() * sizeof(char16_t),
                reinterpret_cast<char*>(units.data()));
    return units;
}

/// What no text has that is meant for people.
bool hasControls(const std::u16string& units) {
    return std::any_of(units.begin(), units.end(), [](char16_t unit) {
        return unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\f' && unit != u'\r';
    });
}

/// Gives a text in UTF-8 when people could read it.
bool isReadable(const SessionDesc& text, std::string& utf8) {
    SessionDesc bytes;
    if (hasControls(unitsOf(text.bytes())) ||
        AECoerceDesc(&text.desc, typeUTF8Text, &bytes.desc) != noErr)
        return false;
    utf8 = bytes.bytes();
    return true;
}

OSAError decode(const std::string& bytes, SessionDesc& text) {
    return OSADecodeScriptText(bytes.data(), static_cast<Size>(bytes.size()), &text.desc);
}

/// Lines end in CR, LF or both.
std::size_t lineAt(const std::u16string& source, std::size_t position) {
    std::size_t line = 1;
    for (std::size_t i = 0; i < std::min(position, source.size()); ++i) {
        const bool isPairsFirst =
            source[i] == u'\r' && i + 1 < source.size() && source[i + 1] == u'\n';
        if (source[i] == u'\n' || (source[i] == u'\r' && !isPairsFirst)) ++line;
    }
    return line;
}

/// Whether the language would be there with more memory than is allowed.
bool lacksMemory(OSType subType) {
    OSALimits limits;
    OSAGetLimits(&limits);
    const OSALimits unbounded{limits.milliseconds, 0};
    OSASetLimits(&unbounded);
    const ComponentInstance instance = OpenDefaultComponent(kOSAComponentType, subType);
    OSASetLimits(&limits);
    return instance != nullptr && CloseComponent(instance) == noErr;
}
constexpr char kTooLittleMemory[] = "too little memory was allowed for its language to start";

std::string languageText(OSType subType) {
    return "'" + fourCharText(subType) + "'";
}

}  // namespace

std::string mainScriptOf(const std::string& bundle) {
    return bundle + "/Contents/Resources/Scripts/main.scpt";
}

std::string SessionDesc::bytes() const {
    return desc.dataHandle == nullptr
               ? std::string()
               : std::string(*desc.dataHandle, static_cast<std::size_t>(AEGetDescDataSize(&desc)));
}

OSErr makeText(const std::string& utf8, AEDesc* result) {
    const std::string valid = toValidUTF8(utf8);
    return AECoercePtr(typeUTF8Text, valid.data(), static_cast<Size>(valid.size()), typeUnicodeText,
                       result);
}

std::vector<Language> languages() {
    std::vector<Language> found;
    const ComponentDescription scripting{kOSAComponentType, 0, 0, 0, 0};
    for (Component at = nullptr; (at = FindNextComponent(at, &scripting)) != nullptr;) {
        ComponentDescription told{};
        if (GetComponentInfo(at, &told, nullptr, nullptr, nullptr) == noErr &&
            told.componentSubType != kOSAGenericScriptingComponentSubtype)
            found.push_back({nameOf(at), told.componentSubType, at});
    }
    return found;
}

ScriptSession::~ScriptSession() {
    if (component_ != nullptr) CloseComponent(component_);
}

std::string ScriptSession::open(const std::string& language) {
    component_ = OpenDefaultComponent(kOSAComponentType, kOSAGenericScriptingComponentSubtype);
    if (component_ == nullptr) return "scripts cannot be read here";
    if (language.empty()) return {};
    for (const Language& known : languages()) {
        if (strcasecmp(known.name.c_str(), language.c_str()) != 0 &&
            fourCharText(known.subType) != language)
            continue;
        return reason(OSASetDefaultScriptingComponent(component_, known.subType));
    }
    return "there is no language '" + forTerminal(language) + "' here";
}

std::string ScriptSession::loadFile(const std::string& path) {
    FSRef file;
    if (std::string reason = findFile(path, file); !reason.empty()) return reason;
    const OSAError status = OSALoadFile(component_, &file, nullptr, kOSAModeNull, &script_);
    return status == noErr ? std::string() : loadingReason(status, file);
}

std::string ScriptSession::loadBytes(const std::string& bytes) {
    SessionDesc desc;
    if (decode(bytes, desc) == noErr) return compile(desc);
    const OSErr status = AECreateDesc(typeOSAGenericStorage, bytes.data(),
                                      static_cast<Size>(bytes.size()), &desc.desc);
    return makingReason(status != noErr ? status
                                        : OSALoad(component_, &desc.desc, kOSAModeNull, &script_));
}

std::string ScriptSession::loadText(const std::string& utf8) {
    SessionDesc text;
    const OSErr status = makeText(utf8, &text.desc);
    return status != noErr ? reason(status) : compile(text);
}

std::string ScriptSession::compile(const SessionDesc& text) {
    const OSAError status = OSACompile(component_, &text.desc, kOSAModeNull, &script_);
    if (status != noErr) text_ = unitsOf(text.bytes());
    return makingReason(status);
}

std::string ScriptSession::source(std::string& utf8) const {
    SessionDesc text;
    OSAError status = OSAGetSource(component_, script_, typeUnicodeText, &text.desc);
    SessionDesc bytes;
    if (status == noErr) status = AECoerceDesc(&text.desc, typeUTF8Text, &bytes.desc);
    utf8 = bytes.bytes();
    return reason(status);
}

std::string ScriptSession::readSource(const std::string& path, std::string& utf8) {
    FSRef file;
    if (std::string reason = findFile(path, file); !reason.empty()) return reason;
    SessionDesc text;
    if (OSACopyScriptText(&file, &text.desc) == noErr && isReadable(text, utf8)) return {};
    std::string reason = loadFile(path);
    return reason.empty() ? source(utf8) : reason;
}

std::string ScriptSession::readSourceOfBytes(const std::string& bytes, std::string& utf8) {
    SessionDesc text;
    if (decode(bytes, text) == noErr && isReadable(text, utf8)) return {};
    std::string reason = loadBytes(bytes);
    return reason.empty() ? source(utf8) : reason;
}

std::string ScriptSession::display(OSAID value, bool asSource, std::string& utf8) const {
    SessionDesc text;
    OSAError status = OSADisplay(component_, value, typeUnicodeText,
                                 asSource ? kOSAModeNull : kOSAModeDisplayForHumans, &text.desc);
    SessionDesc bytes;
    if (status == noErr) status = AECoerceDesc(&text.desc, typeUTF8Text, &bytes.desc);
    utf8 = bytes.bytes();
    return reason(status);
}

std::string ScriptSession::reason(OSAError status) const {
    switch (status) {
        case noErr:
            return {};
        case errOSAScriptError:
            return scriptReason();
        case errOSASystemError:
            return "was stopped: it took too much time or memory";
        case userCanceledErr:
            return "was stopped";
        case errOSABadStorageType:
            return "is no script";
        case errOSACorruptData:
        case mapReadErr:
            return "is a damaged script";
        case errOSADataFormatObsolete:
        case errOSADataFormatTooNew:
            return "is a script of a form that cannot be read";
        case errOSASourceNotAvailable:
            return "was stored without its source";
        case errOSACantOpenComponent:
            return startingReason();
        case notAFileErr:
            return "is no file";
        case fileBoundsErr:
            return "is longer than a script may be";
        case memFullErr:
            return "takes too much memory";
        default:
            return readingReason(status);
    }
}

std::string ScriptSession::makingReason(OSAError status) const {
    return status == errOSASystemError ? "takes more memory than is allowed" : reason(status);
}

std::string ScriptSession::startingReason() const {
    OSType subType = 0;
    OSAGetDefaultScriptingComponent(component_, &subType);
    return lacksMemory(subType) ? kTooLittleMemory : "its language is not installed";
}

std::string ScriptSession::scriptReason() const {
    SessionDesc range;
    SInt32 start = 0;
    const bool hasRange =
        OSAScriptError(component_, kOSAErrorRange, typeAERecord, &range.desc) == noErr &&
        AEGetParamPtr(&range.desc, keyOSASourceStart, typeSInt32, nullptr, &start, sizeof start,
                      nullptr) == noErr;
    const std::u16string source = hasRange && start >= 0 ? sourceUnits() : std::u16string();
    // a full message may tell the line itself
    std::string message =
        forTerminal(errorText(source.empty() ? kOSAErrorMessage : kOSAErrorBriefMessage));
    if (message.empty()) return "failed";
    return source.empty()
               ? message
               : message + " (line " +
                     std::to_string(lineAt(source, static_cast<std::size_t>(start))) + ")";
}

std::string ScriptSession::errorText(OSType selector) const {
    SessionDesc text;
    SessionDesc bytes;
    if (OSAScriptError(component_, selector, typeUnicodeText, &text.desc) != noErr ||
        AECoerceDesc(&text.desc, typeUTF8Text, &bytes.desc) != noErr)
        return {};
    return bytes.bytes();
}

std::string ScriptSession::loadingReason(OSAError status, const FSRef& file) {
    OSType subType = 0;
    const OSAError told = OSAGetStoredSubType(&file, &subType);
    if (status == errOSACantOpenComponent && told == noErr && lacksMemory(subType))
        return kTooLittleMemory;
    if (status == errOSACantOpenComponent && told == noErr)
        return "stored in language " + languageText(subType) + ", which no component here reads";
    if (status != errOSAScriptError || told != errOSABadStorageType) return makingReason(status);
    SessionDesc text;  // that does not compile: its lines are the file's
    if (OSACopyScriptText(&file, &text.desc) == noErr) text_ = unitsOf(text.bytes());
    return reason(status);
}

std::u16string ScriptSession::sourceUnits() const {
    if (script_ == kOSANullScript) return text_;
    SessionDesc text;
    if (OSAGetSource(component_, script_, typeUnicodeText, &text.desc) != noErr) return {};
    return unitsOf(text.bytes());
}

}  // namespace osa::cli
