// Alias records in handles: making and resolving them.
#include <CoreServices/Aliases.h>
#include <CoreServices/MacErrors.h>
#include <CoreServices/MacMemory.h>

#include <algorithm>
#include <new>

#include "platform/aliases/AliasPlaces.h"
#include "platform/aliases/AliasTarget.h"
#include "platform/files/Names.h"

namespace osa {
namespace {

ByteSpan bytesOf(AliasHandle alias) {
    const auto handle = reinterpret_cast<Handle>(alias);
    if (handle == nullptr || *handle == nullptr) return {};
    return {reinterpret_cast<const std::byte*>(*handle),
            static_cast<std::size_t>(GetHandleSize(handle))};
}

Result<AliasHandle> handleOf(const AliasRecord& record) {
    OSA_TRY(const auto bytes, record.write());
    Handle handle = nullptr;
    const OSErr status = PtrToHand(bytes.data(), &handle, static_cast<Size>(bytes.size()));
    if (status != noErr) return Failure(status);
    return reinterpret_cast<AliasHandle>(handle);
}

Result<AliasHandle> makeAlias(const FSRef* fromFile, const FSRef* target) {
    OSA_TRY(const Located object, locate(target));
    OSA_TRY(AliasRecord record, recordOf(object));
    if (fromFile != nullptr) {
        OSA_TRY(const Located from, locate(fromFile));
        OSA_CHECK(addRelation(record, from));
    }
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

Result<AliasTarget> resolveAlias(const FSRef* fromFile, AliasHandle alias) {
    const auto record = AliasRecord::parse(bytesOf(alias));
    if (!record.ok()) return Failure(paramErr);
    if (fromFile == nullptr) return findAliasTarget(*record, {});
    OSA_TRY(const Located from, locate(fromFile));
    return findAliasTarget(*record, std::string(from.folder()));
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

OSErr FSResolveAlias(const FSRef* fromFile, AliasHandle alias, FSRef* target, Boolean* wasChanged) {
    if (alias == nullptr || target == nullptr) return paramErr;
    try {
        const auto found = osa::resolveAlias(fromFile, alias);
        if (!found.ok()) return static_cast<OSErr>(found.status());
        *target = found->ref;
        if (wasChanged != nullptr) *wasChanged = found->isElsewhere ? 1 : 0;
        return noErr;
    } catch (const std::bad_alloc&) {
        return memFullErr;
    }
}

Size GetAliasSize(AliasHandle alias) {
    const osa::ByteSpan bytes = osa::bytesOf(alias);
    osa::ByteReader reader(bytes);
    reader.skip(4);
    return std::min<Size>(reader.u16(), static_cast<Size>(bytes.size()));
}

OSType GetAliasUserType(AliasHandle alias) {
    return osa::ByteReader(osa::bytesOf(alias)).fourCC();
}
