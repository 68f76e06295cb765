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
    PartPlace::Form form;
};
constexpr std::array kInfoNames{
    InfoName{"user.com.apple.FinderInfo", rawFinderInfo, PartPlace::Form::bare},
    InfoName{"user.org.netatalk.Metadata", headerFinderInfo, PartPlace::Form::appleDouble},
    InfoName{"user.DosStream.AFP_AfpInfo:$DATA", streamFinderInfo, PartPlace::Form::afpInfo},
    InfoName{"user.DosStream.AFP_AfpInfo", streamFinderInfo, PartPlace::Form::afpInfo},
};

struct ForkName {
    const char* name;
    PartPlace::Form form;
};
// SMB servers add a zero, because some systems keep no empty attributes.
constexpr std::array kForkNames{
    ForkName{"user.com.apple.ResourceFork", PartPlace::Form::bare},
    ForkName{"user.org.netatalk.ResourceFork", PartPlace::Form::bare},
    ForkName{"user.DosStream.AFP_Resource:$DATA", PartPlace::Form::zeroEnded},
    ForkName{"user.DosStream.AFP_Resource", PartPlace::Form::zeroEnded},
};

class ExtendedAttributes : public ForkStore {
  public:
    Result<StoredParts> look(const Located& object, FolderSurroundings&) const override {
        StoredParts parts;
        const std::string& path = object.path();
        OSA_TRY(const auto names, posix::listAttributes(path));
        for (const InfoName& info : kInfoNames) {
            OSA_TRY(const auto value, valueOf(path, names, info.name));
            if (value) parts.addFinderInfo(info.read(*value), {info.form, info.name});
        }
        for (const ForkName& fork : kForkNames) {
            OSA_TRY(auto value, valueOf(path, names, fork.name));
            if (!value) continue;
            const bool hasZero = fork.form == PartPlace::Form::zeroEnded;
            if (hasZero && !value->empty() && value->back() == std::byte{0}) value->pop_back();
            parts.addFork(std::make_shared<StoredFork>(
                              StoredFork{std::make_shared<MemorySource>(*value), {}, {}, {}}),
                          {fork.form, fork.name});
        }
        // No witness: setting an attribute changes the object's own dates.
        return parts;
    }

  private:
    static Result<std::optional<Bytes>> valueOf(const std::string& path,
                                                const std::vector<std::string>& names,
                                                const char* name) {
        std::optional<Bytes> none;
        if (std::find(names.begin(), names.end(), name) == names.end()) return none;
        auto value = posix::attribute(path, name);
        if (value.ok()) return std::optional<Bytes>(std::move(*value));
        if (value.status() == fnfErr) return none;
        return Failure(value.status());
    }
};

const ExtendedAttributes store;

}  // namespace

const ForkStore& extendedAttributes = store;

}  // namespace osa
