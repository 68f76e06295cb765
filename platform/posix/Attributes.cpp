// Extended attributes. Where a file system has none, an object simply has no attributes.
#include <CoreServices/MacErrors.h>
#include <sys/xattr.h>

#include <algorithm>
#include <optional>

#include "platform/posix/FileSystem.h"
#include "platform/posix/PosixSupport.h"
#include "platform/posix/SystemCall.h"

namespace osa::posix {
namespace {

// The kernel's own limit for a value and for a list of names.
constexpr std::size_t kLimit = kLargestAttribute;

using Value = std::optional<std::vector<std::byte>>;

/// Calls `read` with growing room, as the size may change between asking and reading; no value
/// where there is no attribute or the file system keeps none.
template <typename Read>
Result<Value> readGrowing(Read read) {
    std::vector<std::byte> buffer(512);
    for (;;) {
        const ssize_t length = systemCall([&] { return read(buffer.data(), buffer.size()); });
        if (length >= 0) {
            buffer.resize(static_cast<std::size_t>(length));
            return Value(std::move(buffer));
        }
        if (errno == ERANGE && buffer.size() < kLimit) {
            buffer.resize(kLimit);
            continue;
        }
        const bool none = errno == ENODATA || errno == ENOTSUP || errno == ERANGE || errno == E2BIG;
        if (!none) return lastError();
        return Value();
    }
}

Failure cannotSet() {
    // Too long for the file system, or for what is left beside the others.
    const bool isNoRoom = errno == E2BIG || errno == ERANGE;
    return isNoRoom ? Failure(dskFulErr) : lastError(Intent::changeCatalog);
}

/// Whether a copy of the file without the attribute would be another file to its users: their own
/// attributes, and who may read it.
bool isEssential(const std::string& name) {
    return name.starts_with("user.") || name.starts_with("system.posix_acl_");
}

}  // namespace

Result<std::vector<std::byte>> attribute(const std::string& path, const std::string& name) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    OSA_TRY(Value value, readGrowing([&](void* buffer, std::size_t size) {
                return lgetxattr(path.c_str(), name.c_str(), buffer, size);
            }));
    if (!value) return Failure(fnfErr);
    return *std::move(value);
}

Result<std::vector<std::string>> listAttributes(const std::string& path) {
    if (!isUsablePath(path)) return Failure(fnfErr);
    OSA_TRY(const Value list, readGrowing([&](void* buffer, std::size_t size) {
                return llistxattr(path.c_str(), static_cast<char*>(buffer), size);
            }));
    std::vector<std::string> names;
    std::string_view rest = list ? asText(*list) : std::string_view();
    while (!rest.empty()) {
        const std::string_view name = rest.substr(0, rest.find('\0'));
        names.emplace_back(name);
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
    }
    return names;
}

Result<void> copyAttributes(const std::string& from, int to) {
    const auto names = listAttributes(from);
    if (names.status() == fnfErr) return {};
    OSA_CHECK(names);
    for (const std::string& name : *names) {
        const auto value = attribute(from, name);
        if (value.status() == fnfErr || (!value.ok() && !isEssential(name))) continue;
        OSA_CHECK(value);
        const int failed = systemCall(
            [&] { return fsetxattr(to, name.c_str(), value->data(), value->size(), 0); });
        if (failed != 0 && isEssential(name)) return cannotSet();
    }
    return {};
}

Result<void> setAttribute(const std::string& path, const std::string& name, ByteSpan value) {
    const int failed = systemCall(
        [&] { return lsetxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0); });
    if (failed != 0) return cannotSet();
    return {};
}

Result<void> removeAttribute(const std::string& path, const std::string& name) {
    const int failed = systemCall([&] { return lremovexattr(path.c_str(), name.c_str()); });
    if (failed != 0 && errno != ENODATA) return lastError(Intent::changeCatalog);
    return {};
}

}  // namespace osa::posix
