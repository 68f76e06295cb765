// Any bytes as a stored JavaScript script: what is accepted is written to what reads the same.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/osa/javascript/Storage.h"
#include "platform/osa/javascript/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    osa::script::StoredSource source, again;
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    if (osa::script::readStored(bytes, &source) != noErr) return 0;
    osa::script::Desc written;
    if (osa::script::writeStored(source, written.out()) != noErr) std::abort();
    const osa::ByteSpan stored(reinterpret_cast<const std::byte*>(*written.desc.dataHandle),
                               static_cast<std::size_t>(AEGetDescDataSize(&written.desc)));
    if (osa::script::readStored(stored, &again) != noErr || again.text != source.text ||
        again.runOnly != source.runOnly)
        std::abort();
    return 0;
}
