// Forks and Finder information in extended attributes, under the names that copy programs, AFP
// servers and SMB servers give them.
#include <CoreServices/MacErrors.h>

#include <algorithm>
#include <array>
#include <functional>

#include "platform/files/formats/AfpInfo.h"
#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkStore.h"

namespace osa {
namespace {

using Bytes = std::vector<std::byte>;

FinderInfoBytes rawFinderInfo(const Bytes& value) {
    return finderInfoBytes(value);
}

/// A whole AppleDouble header in one attribute.
FinderInfoBytes headerFinderInfo(const Bytes& value) {
    const auto header = AppleDouble::parse(std::make_shared<MemorySource>(value));
    if (!header.ok()) return {};
    const auto info = header->finderInfoContent();
    return info.ok() ? *info : FinderInfoBytes{};
}

FinderInfoBytes streamFinderInfo(const Bytes& value) {
    return parseAfpInfo(value).value_or(FinderInfoBytes{});
}

struct InfoName {
    const char* name;
    FinderInfoBytes (*read)(const Bytes&);
    FinderInfoPlace::Form form;
};
constexpr std::array kInfoNames{
    InfoName{"user.com.apple.FinderInfo", rawFinderInfo, FinderInfoPlace::Form::bare},
    InfoName{"user.org.netatalk.Metadata", headerFinderInfo, FinderInfoPlace::Form::appleDouble},
    InfoName{"user.DosStream.AFP_AfpInfo:$DATA", streamFinderInfo, FinderInfoPlace::Form::afpInfo},
    InfoName{"user.DosStream.AFP_AfpInfo", streamFinderInfo, FinderInfoPlace::Form::afpInfo},
};

struct ForkName {
    const char* name;
    bool hasZeroAtEnd;  // SMB servers add one, because some systems keep no empty attributes
};
constexpr std::array kForkNames{
    ForkName{"user.com.apple.ResourceFork", false},
    ForkName{"user.org.netatalk.ResourceFork", false},
    ForkName{"user.DosStream.AFP_Resource:$DATA", true},
    ForkName{"user.DosStream.AFP_Resource", true},
};

class ExtendedAttributes : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings&) const override {
        StoredParts parts;
        const std::string& path = object.path();
        OSA_TRY(const auto names, posix::listAttributes(path));
        for (const InfoName& info : kInfoNames) {
            OSA_TRY(const Bytes value, valueOf(path, names, info.name));
            if (!isBlank(parts.finderInfo) || value.empty()) continue;
            parts.finderInfo = info.read(value);
            parts.infoPlace = {info.form, info.name, 0};
        }
        for (const ForkName& fork : kForkNames) {
            OSA_TRY(Bytes value, valueOf(path, names, fork.name));
            if (fork.hasZeroAtEnd && !value.empty() && value.back() == std::byte{0}) {
                value.pop_back();
            }
            if (value.empty() || parts.resourceFork) continue;
            parts.resourceFork = std::make_shared<StoredFork>(
                StoredFork{std::make_shared<MemorySource>(value), {}, {}, {}});
        }
        // No witness: setting an attribute changes the object's own dates.
        return parts;
    }

  private:
    /// Empty when there is none of the name.
    static Result<Bytes> valueOf(const std::string& path, const std::vector<std::string>& names,
                                 const char* name) {
        if (std::find(names.begin(), names.end(), name) == names.end()) return Bytes();
        auto value = posix::attribute(path, name);
        if (!value.ok() && value.status() == fnfErr) return Bytes();
        return value;
    }
};

const ExtendedAttributes store;

}  // namespace

const ForkStore& extendedAttributes = store;

}  // namespace osa
