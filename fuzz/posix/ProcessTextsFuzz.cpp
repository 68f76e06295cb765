// Any bytes as each of the kernel's texts about a process: what is told of them is a part of them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "platform/posix/processes/ProcessTexts.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto facts = osa::posix::factsFromStat(text);
    if (facts && !text.starts_with(std::to_string(facts->id)) && text.front() != '0') std::abort();
    const std::string unit = osa::posix::unitFromControlGroups(text);
    const bool isUnit = unit.ends_with(".scope") || unit.ends_with(".service");
    if (unit.find_first_of("/\n") != unit.npos || isUnit == unit.empty()) std::abort();
    for (const std::string_view name : {std::string_view("A"), text.substr(0, text.find('='))}) {
        const std::string value = osa::posix::variableIn(text, name);
        if (value.find('\0') != value.npos || text.find(value) == text.npos) std::abort();
    }
    return 0;
}
