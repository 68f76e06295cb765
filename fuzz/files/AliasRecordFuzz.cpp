// Alias records: read, written and read again.
#include <cstdlib>

#include "platform/aliases/AliasRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto record = osa::AliasRecord::parse(osa::ByteReader(data, size).rest());
    if (!record.ok()) return 0;
    // No name can be longer than three bytes for each one of the record.
    if (record->targetName.size() + record->volumeName.size() > 6 * size) std::abort();
    const auto bytes = record->write();
    if (!bytes.ok()) return 0;
    auto again = osa::AliasRecord::parse(*bytes);
    if (!again.ok()) std::abort();
    record->version = again->version = 2;
    // It has no whole form beside the short one.
    if (record->parentName.size() > 63) record->parentName = again->parentName = {};
    if (*again != *record) std::abort();
    return 0;
}
