// Alias records in handles: making and updating them.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <new>

#include "platform/aliases/AliasHandles.h"
#include "platform/aliases/AliasPlaces.h"
#include "platform/files/Names.h"

namespace osa {
namespace {

Result<AliasHandle> handleOf(const AliasRecord& record) {
    OSA_TRY(const auto bytes, record.write());
    Handle handle = nullptr;
    const OSErr status = PtrToHand(bytes.data(), &handle, static_cast<Size>(bytes.size()));
    if (status != noErr) return Failure(status);
    return reinterpret_cast<AliasHandle>(handle);
}

Result<AliasRecord> currentRecord(const FSRef* fromFile, const FSRef* target) {
    OSA_TRY(const Located object, locate(target));
    OSA_TRY(AliasRecord record, recordOf(object));
    if (fromFile != nullptr) {
        OSA_TRY(const Located from, locate(fromFile));
        OSA_CHECK(addRelation(record, from));
    }
    return record;
}

Result<AliasHandle> makeAlias(const FSRef* fromFile, const FSRef* target) {
    OSA_TRY(const AliasRecord record, currentRecord(fromFile, target));
    return handleOf(record);
}

std::string_view textOf(const unsigned char* pascal) {
    if (pascal == nullptr) return {};
    return {reinterpret_cast<const char*>(pascal) + 1, pascal[0]};
}

Result<AliasHandle> makeAliasOfPath(std::string_view path, std::string_view zone,
                                    std::string_view server) {
    OSA_TRY(AliasRecord record, recordOfFullPath(path));
    record.zoneName = leafFromMacRoman(zone);
    record.serverName = leafFromMacRoman(server);
    return handleOf(record);
}

Result<bool> updateAlias(const FSRef* fromFile, const FSRef* target, AliasHandle alias) {
    OSA_TRY(const AliasRecord old, aliasRecord(alias));
    OSA_TRY(AliasRecord record, currentRecord(fromFile, target));
    record.userType = old.userType;
    return storeRecord(alias, record);
}

/// The edge of the calls that make an alias: what `make` gives goes to `alias`.
template <typename Make>
OSErr giveAlias(AliasHandle* alias, Make make) {
    if (alias == nullptr) return paramErr;
    *alias = nullptr;
    try {
        const Result<AliasHandle> made = make();
        if (made.ok()) *alias = *made;
        return static_cast<OSErr>(made.status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

}  // namespace
}  // namespace osa

OSErr FSNewAlias(const FSRef* fromFile, const FSRef* target, AliasHandle* inAlias) {
    return osa::giveAlias(inAlias, [&] { return osa::makeAlias(fromFile, target); });
}

OSErr FSNewAliasMinimal(const FSRef* target, AliasHandle* inAlias) {
    return osa::giveAlias(inAlias, [&] { return osa::makeAlias(nullptr, target); });
}

OSErr NewAliasMinimalFromFullPath(SInt16 fullPathLength, const void* fullPath,
                                  ConstStr32Param zoneName, ConstStr31Param serverName,
                                  AliasHandle* alias) {
    return osa::giveAlias(alias, [&]() -> osa::Result<AliasHandle> {
        if (fullPath == nullptr || fullPathLength <= 0) return osa::Failure(paramErr);
        const std::string_view path(static_cast<const char*>(fullPath),
                                    static_cast<std::size_t>(fullPathLength));
        return osa::makeAliasOfPath(path, osa::textOf(zoneName), osa::textOf(serverName));
    });
}

OSErr FSUpdateAlias(const FSRef* fromFile, const FSRef* target, AliasHandle alias,
                    Boolean* wasChanged) {
    if (alias == nullptr) return paramErr;
    try {
        const auto updated = osa::updateAlias(fromFile, target, alias);
        if (updated.ok() && wasChanged != nullptr) *wasChanged = *updated ? 1 : 0;
        return static_cast<OSErr>(updated.status());
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}
