// Any bytes as user-dirs.dirs: what is found is an absolute path of a line's length.
#include <cstdlib>

#include "platform/base/ByteReader.h"
#include "platform/files/special/UserDirs.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const osa::ByteSpan bytes(reinterpret_cast<const std::byte*>(data), size);
    const std::string found = osa::userDirectory(osa::asText(bytes), "XDG_DESKTOP_DIR", "/h");
    if (!found.empty() && (found.front() != '/' || found.size() > size)) std::abort();
    return 0;
}
