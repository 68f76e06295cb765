// Decompressor 2: every word of the output is a word of a table, or written out where tags say so.
#include "platform/resources/compression/DecompressionTables.h"
#include "platform/resources/compression/Decompressor.h"

namespace osa {
namespace {

constexpr unsigned kOwnTable = 0x01;
constexpr unsigned kTagged = 0x02;

class Words {
  public:
    /// The table before the data when there is one, else the built-in one.
    Words(ByteReader& input, unsigned entries, bool own)
        : own_(own ? input.bytes(std::size_t{2} * entries) : ByteSpan{}), hasOwn_(own) {}

    void write(unsigned index, ExpandedBytes& output) const {
        if (!hasOwn_) return output.u16(kWords2[index]);
        if (2 * index + 2 > own_.size()) return output.fail();
        output.bytes(own_.subspan(std::size_t{2} * index, 2));
    }

  private:
    ByteSpan own_;
    bool hasOwn_;
};

}  // namespace

void decompress2(ByteReader& input, unsigned entries, unsigned flags, ExpandedBytes& output) {
    const Words words(input, entries, (flags & kOwnTable) != 0);
    // Of an odd length the last byte stands for itself where a tag or an index would be.
    const auto isLastByte = [&] { return output.oddLength() && input.remaining() == 1; };
    const auto word = [&] {
        isLastByte() ? output.u8(input.u8()) : words.write(input.u8(), output);
    };
    while (input.ok() && output.ok() && !input.atEnd()) {
        if ((flags & kTagged) == 0 || isLastByte()) {
            word();
            continue;
        }
        const unsigned tags = input.u8();
        for (unsigned bit = 0x80; bit != 0 && !input.atEnd() && output.ok(); bit >>= 1) {
            if ((tags & bit) != 0)
                word();
            else
                output.bytes(input.bytes(input.remaining() == 1 ? 1 : 2));
        }
    }
}

}  // namespace osa
