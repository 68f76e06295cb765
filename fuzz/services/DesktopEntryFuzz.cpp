// Any bytes as a desktop entry, and its command line with hostile documents, none of which may come
// to stand in the program's place.
#include <cstdlib>

#include "platform/services/applications/DesktopEntry.h"
#include "platform/services/applications/ExecLine.h"

namespace {

void checkCommands(const osa::DesktopEntry& entry, const osa::ExecLine& line) {
    static const std::vector<std::string> documents{"/a\n\"%f\" $(b)", "/%u"};
    const osa::ExecFields fields{entry.text("Icon"), entry.text("Name"), "/%F"};
    const auto commands = line.commands(fields, documents);
    if (commands.empty() || commands.size() > documents.size()) std::abort();
    for (const auto& arguments : commands) {
        if (arguments.empty() || arguments.front() != line.program()) std::abort();
    }
    if (line.commands({}, {}).size() != 1) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const auto entry = osa::DesktopEntry::parse(bytes);
    if (!entry) return 0;
    for (const char* const key : {"Name", "Type", "X-OSA-Signature"}) {
        if (entry->localText(key, {"de_AT@euro", "de"}).size() > size) std::abort();
    }
    (void)entry->isTrue("Hidden");
    if (const auto line = osa::ExecLine::parse(entry->text("Exec"))) checkCommands(*entry, *line);
    return 0;
}
