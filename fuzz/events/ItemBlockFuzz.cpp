// Any bytes as the block of a list, record or event: every call answers, none leaves the block.
// The input's first byte chooses the type and what is changed.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/events/ReadEverything.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr DescType kTypes[] = {typeAEList, typeAERecord, typeAppleEvent, 'obj '};
    if (size == 0) return 0;
    const unsigned choice = data[0];
    AEDesc desc;
    if (AECreateDesc(kTypes[choice % 4], data + 1, static_cast<Size>(size - 1), &desc) != 0)
        return 0;
    osa::fuzz::readEverything(desc);
    std::vector<char> flat(static_cast<std::size_t>(AESizeOfFlattenedDesc(&desc)));
    const auto length = static_cast<Size>(flat.size());
    if (AEFlattenDesc(&desc, flat.data(), length, nullptr) == 0) {
        AEDesc back;
        osa::fuzz::require(AEUnflattenDescFromBytes(flat.data(), flat.size(), &back) == 0);
        AEDisposeDesc(&back);
    }
    const SInt32 index = static_cast<SInt32>(choice / 4 % 8);
    AEPutDesc(&desc, index, &desc);
    AEPutParamDesc(&desc, 'key ', &desc);
    AEPutAttributePtr(&desc, keySubjectAttr, typeChar, "some text", 9);
    AEDeleteItem(&desc, index);
    AEDeleteParam(&desc, keyDirectObject);
    osa::fuzz::readEverything(desc);
    AEDisposeDesc(&desc);
    return 0;
}
