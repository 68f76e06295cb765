// A language for tests: a script's value is its source; the source "bad" fails to compile, and
// with "throw" the component throws.
#pragma once

#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>
#include <OSA/ScriptingComponents.h>

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include "platform/osa/StoredScripts.h"

namespace osa::test {

inline std::string bytesOf(const AEDesc& desc) {
    return desc.dataHandle == nullptr
               ? ""
               : std::string(*desc.dataHandle, static_cast<std::size_t>(AEGetDescDataSize(&desc)));
}

/// Numbers of all languages start alike, so that those of one must not reach another.
template <OSType kSubType>
class FakeLanguage {
  public:
    static inline std::atomic<int> open = 0;
    static inline std::function<void()> whileRunning;  ///< once

    static const OSAComponentCalls* calls() {
        static OSAComponentCalls table{};
        table.size = sizeof table;
        table.open = [](ComponentInstance, void** storage) -> OSAError {
            ++open;
            *storage = new FakeLanguage;
            return noErr;
        };
        table.close = [](void* storage) {
            --open;
            delete &self(storage);
        };
        table.compile = [](void* storage, const AEDesc* source, SInt32, OSAID* id) -> OSAError {
            AEDesc text;
            OSErr status = AECoerceDesc(source, typeUTF8Text, &text);
            const std::string script = bytesOf(text);
            AEDisposeDesc(&text);
            if (status == noErr && script == "bad") status = errOSAScriptError;
            if (script == "throw") throw 1;
            return status != noErr ? status : self(storage).put(script, id);
        };
        table.load = [](void* storage, const AEDesc* data, SInt32, OSAID* id) -> OSAError {
            const std::string bytes = bytesOf(*data);
            const auto stored = parseStoredScript(asBytes(bytes));
            return stored ? self(storage).put(std::string(asText(stored->body)), id)
                          : stored.status();
        };
        table.store = [](void* storage, OSAID id, DescType, SInt32 mode,
                         AEDesc* result) -> OSAError {
            const std::string* const script = self(storage).find(id);
            if (script == nullptr) return errOSAInvalidID;
            const bool isBare = (mode & kOSAModePreventGetSource) != 0;
            const auto bytes = makeStoredScript(asBytes(isBare ? "" : *script), kSubType);
            return AECreateDesc(typeOSAGenericStorage, bytes.data(),
                                static_cast<Size>(bytes.size()), result);
        };
        table.execute = [](void* storage, OSAID id, OSAID, SInt32, OSAID* result) -> OSAError {
            if (whileRunning) std::exchange(whileRunning, nullptr)();
            return self(storage).copy(id, result);
        };
        table.copyID = [](void* storage, OSAID id, OSAID* result) -> OSAError {
            return self(storage).copy(id, result);
        };
        table.getSource = [](void* storage, OSAID id, DescType, AEDesc* result) -> OSAError {
            const std::string* const script = self(storage).find(id);
            return script == nullptr ? OSAError{errOSAInvalidID} : text(*script, result);
        };
        table.getScriptInfo = [](void* storage, OSAID id, OSType selector,
                                 SInt32* result) -> OSAError {
            const std::string* const script = self(storage).find(id);
            if (script == nullptr) return errOSAInvalidID;
            *result = script->empty() ? 0 : 1;
            return selector == kOSACanGetSource ? OSAError{noErr} : OSAError{errOSABadSelector};
        };
        table.scriptError = [](void*, OSType, DescType, AEDesc* result) -> OSAError {
            return text(std::string("no ") + static_cast<char>(kSubType >> 24), result);
        };
        table.dispose = [](void* storage, OSAID id) -> OSAError {
            return self(storage).scripts_.erase(id) == 1 ? noErr : errOSAInvalidID;
        };
        return &table;
    }

  private:
    static FakeLanguage& self(void* storage) { return *static_cast<FakeLanguage*>(storage); }
    static OSAError text(const std::string& text, AEDesc* result) {
        return AECreateDesc(typeUTF8Text, text.data(), static_cast<Size>(text.size()), result);
    }
    const std::string* find(OSAID id) const {
        const auto known = scripts_.find(id);
        return known == scripts_.end() ? nullptr : &known->second;
    }
    OSAError put(const std::string& script, OSAID* id) {
        if (*id == kOSANullScript) *id = ++last_;
        scripts_[*id] = script;
        return noErr;
    }
    OSAError copy(OSAID id, OSAID* result) {
        const std::string* const script = find(id);
        return script == nullptr ? OSAError{errOSAInvalidID} : put(std::string(*script), result);
    }

    std::map<OSAID, std::string> scripts_;
    OSAID last_ = 0;
};

}  // namespace osa::test
