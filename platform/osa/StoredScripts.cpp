// Stored scripts: parsing and writing the trailer.
#include "platform/osa/StoredScripts.h"

#include <CoreServices/MacErrors.h>

#include <algorithm>

#include "platform/base/ByteWriter.h"

namespace osa {
namespace {

constexpr std::uint32_t kMark = 0xFADEDEAD;
constexpr std::size_t kTrailer = 12;

/// What lets a stored script be started as a program is no part of it.
ByteSpan withoutInterpreterLine(ByteSpan bytes) {
    if (!asText(bytes).starts_with("#!")) return bytes;
    const std::size_t end = asText(bytes).find('\n');
    return end == std::string_view::npos ? ByteSpan() : bytes.subspan(end + 1);
}

}  // namespace

bool endsAsStoredScript(ByteSpan bytes) {
    return bytes.size() >= 4 && ByteReader(bytes.last(4)).u32() == kMark;
}

Result<StoredScript> parseStoredScript(ByteSpan bytes) {
    bytes = withoutInterpreterLine(bytes);
    if (!endsAsStoredScript(bytes)) return Failure(errOSABadStorageType);
    if (bytes.size() < kTrailer) return Failure(errOSACorruptData);
    ByteReader trailer(bytes.last(kTrailer));
    StoredScript script;
    script.subType = trailer.fourCC();
    script.version = trailer.u16();
    const std::size_t length = trailer.u16();
    if (length < kTrailer || length > kTrailer + 1 || length > bytes.size())
        return Failure(errOSACorruptData);
    if (script.version > kStoredScriptVersion) return Failure(errOSADataFormatTooNew);
    script.body = bytes.first(bytes.size() - length);
    return script;
}

std::vector<std::byte> makeStoredScript(ByteSpan body, OSType subType) {
    const std::size_t pad = body.size() % 2;
    ByteWriter writer;
    writer.bytes(body).fill(pad).fourCC(subType).u16(kStoredScriptVersion);
    writer.u16(static_cast<std::uint16_t>(kTrailer + pad)).u32(kMark);
    return writer.take();
}

}  // namespace osa
