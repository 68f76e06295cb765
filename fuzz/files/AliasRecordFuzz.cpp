// Alias records.
#include <cstdlib>

#include "platform/aliases/AliasRecord.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto record = osa::AliasRecord::parse(osa::ByteReader(data, size).rest());
    // No name can be longer than three bytes for each one of the record.
    if (record.ok() && record->targetName.size() + record->volumeName.size() > 6 * size)
        std::abort();
    return 0;
}
