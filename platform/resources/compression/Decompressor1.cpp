// Decompressor 1: data made of bytes.
#include "platform/resources/compression/DecompressionTables.h"
#include "platform/resources/compression/Decompressor.h"

namespace osa {

void decompress1(ByteReader& input, ExpandedBytes& output) {
    StoredRuns stored;
    while (input.ok() && output.ok()) {
        const unsigned tag = input.u8();
        if (!input.ok() || tag == 0xFF) return;
        if (tag < 0x10) {
            output.bytes(input.bytes(tag + 1));
        } else if (tag < 0x20) {
            output.bytes(stored.remember(input.bytes((tag & 0x0F) + 1)));
        } else if (tag < 0xD0) {
            output.bytes(stored.at(tag - 0x20, output));
        } else if (tag == 0xD0) {
            output.bytes(input.bytes(input.u8()));
        } else if (tag == 0xD1) {
            output.bytes(stored.remember(input.bytes(input.u8())));
        } else if (tag == 0xD2) {
            output.bytes(stored.at(0xB0 + std::size_t{input.u8()}, output));
        } else if (tag >= kFirstWord1 && tag < 0xFE) {
            output.u16(kWords1[tag - kFirstWord1]);
        } else if (tag == 0xFE && input.u8() == 0x02) {
            repeatValue(input, output, 1);
        } else {
            output.fail();
        }
    }
}

}  // namespace osa
