// Resolving and matching the records in handles.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>

#include <new>

#include "platform/aliases/AliasHandles.h"
#include "platform/aliases/AliasTarget.h"

namespace osa {
namespace {

/// A record, and the file that holds the alias when that is known.
struct Question {
    AliasRecord record;
    std::optional<Located> fromFile;

    std::string folder() const {
        return fromFile ? std::string(fromFile->folder()) : std::string();
    }
    const Located* from() const { return fromFile ? &*fromFile : nullptr; }
};

Result<Question> questionOf(const FSRef* fromFile, AliasHandle alias) {
    OSA_TRY(AliasRecord record, aliasRecord(alias));
    Question question{std::move(record), std::nullopt};
    if (fromFile != nullptr) {
        OSA_TRY(question.fromFile, locate(fromFile));
    }
    return question;
}

/// What the record must become; none when it may stay, also because a link leads to the target.
Result<std::optional<AliasRecord>> correction(const Question& question, const AliasTarget& found) {
    OSA_TRY(const Located target, locate(&found.ref));
    OSA_TRY(auto corrected, correctedRecord(question.record, target, question.from()));
    if (!corrected) return corrected;
    const auto folder = posix::realPath(std::string(target.folder()));
    const bool isLinkedTo =
        target.path() != found.path || !folder.ok() || *folder != target.folder();
    return isLinkedTo ? std::optional<AliasRecord>() : corrected;
}

/// Whether the record in the handle was brought up to date.
bool update(AliasHandle alias, const Question& question, const AliasTarget& found) try {
    const auto corrected = correction(question, found);
    if (!corrected.ok() || !*corrected) return false;
    const auto stored = storeRecord(alias, **corrected);
    return stored.ok() && *stored;
} catch (const std::bad_alloc&) {
    return false;
}

OSErr resolve(const FSRef* fromFile, AliasHandle alias, FSRef* target, Boolean* wasChanged) {
    if (alias == nullptr || target == nullptr) return paramErr;
    try {
        const auto question = questionOf(fromFile, alias);
        if (!question.ok()) return static_cast<OSErr>(question.status());
        const auto found = findAliasTarget(question->record, question->folder(), SearchRules());
        if (!found.ok()) return static_cast<OSErr>(found.status());
        const bool isUpdated = update(alias, *question, *found);
        *target = found->ref;
        if (wasChanged != nullptr) *wasChanged = isUpdated ? 1 : 0;
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

SearchRules searchRules(UInt32 mask) {
    using enum SearchRules::Walk;
    SearchRules rules;
    rules.relationFirst = (mask & kARMSearchRelFirst) != 0;
    rules.numberFirst = (mask & kARMTryFileIDFirst) != 0;
    rules.everyVolume = (mask & kARMMultVols) != 0;
    rules.walkTakesNames = (mask & kARMSearchMore) != 0;
    rules.walk = rules.walkTakesNames       ? always
                 : (mask & kARMSearch) != 0 ? whenNothingElseFinds
                                            : never;
    return rules;
}

struct MatchList {
    FSRef* places;
    SInt16 size;
    FSAliasFilterProcPtr filter;
    void* filterData;
    SInt16 count = 0;
    AliasTarget first{};

    /// Whether the search goes on.
    bool take(const AliasTarget& found) {
        Boolean quit = 0;
        const bool isRefused =
            filter != nullptr && filter(&found.ref, &quit, static_cast<Ptr>(filterData)) != 0;
        if (!isRefused) {
            if (count == 0) first = found;
            places[count++] = found.ref;
        }
        return quit == 0 && count < size;
    }
};

OSStatus match(const Question& question, UInt32 rulesMask, MatchList& list, Boolean* needsUpdate) {
    const auto searched =
        findAliasTargets(question.record, question.folder(), searchRules(rulesMask),
                         [&list](const AliasTarget& found) { return list.take(found); });
    if (!searched.ok()) return searched.status();
    if (list.count == 0) return fnfErr;
    if (needsUpdate == nullptr) return noErr;
    const auto corrected = correction(question, list.first);
    *needsUpdate = corrected.ok() && *corrected ? 1 : 0;
    return noErr;
}

}  // namespace
}  // namespace osa

OSErr FSResolveAlias(const FSRef* fromFile, AliasHandle alias, FSRef* target, Boolean* wasChanged) {
    return osa::resolve(fromFile, alias, target, wasChanged);
}

OSErr FSFollowFinderAlias(const FSRef* fromFile, AliasHandle alias, Boolean, FSRef* target,
                          Boolean* wasChanged) {
    return osa::resolve(fromFile, alias, target, wasChanged);
}

OSStatus FSMatchAliasNoUI(const FSRef* fromFile, UInt32 rulesMask, AliasHandle inAlias,
                          SInt16* aliasCount, FSRef* aliasList, Boolean* needsUpdate,
                          FSAliasFilterProcPtr filter, void* yourDataPtr) {
    if (inAlias == nullptr || aliasCount == nullptr || aliasList == nullptr || *aliasCount < 1)
        return paramErr;
    osa::MatchList list{aliasList, *aliasCount, filter, yourDataPtr};
    *aliasCount = 0;
    try {
        const auto question = osa::questionOf(fromFile, inAlias);
        if (!question.ok()) return question.status();
        const OSStatus status = osa::match(*question, rulesMask, list, needsUpdate);
        *aliasCount = list.count;
        return status;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
