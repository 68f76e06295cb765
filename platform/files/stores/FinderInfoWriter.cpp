// Finding the place for Finder information and changing it there.
#include "platform/files/stores/FinderInfoWriter.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkProbe.h"

namespace osa {
namespace {

using Form = PartPlace::Form;

/// What holds the Finder information, with `bytes` in it.
HolderEdit edit(Form form, const FinderInfoBytes& bytes) {
    constexpr std::uint64_t kOffsetInAfpInfo = 16;
    return [=](const ForkSource& holder) -> Result<ForkSource> {
        if (form == Form::bare) return overlaid(holder, 0, bytes);
        if (form == Form::afpInfo) return overlaid(holder, kOffsetInAfpInfo, bytes);
        OSA_TRY(const AppleDouble file, AppleDouble::parse(holder));
        return file.withFinderInfo(bytes);
    };
}

}  // namespace

Result<void> changeFinderInfo(PartChanges& changes, const Located& object,
                              const FinderInfoBytes& bytes) {
    OSA_TRY(auto holders, partHolders(object, Part::finderInfo));
    if (holders.empty()) {
        return changes.changeSideFile(object, edit(Form::appleDouble, bytes),
                                      [&] { return AppleDouble::make(bytes); });
    }
    // Where one is blanked the others would come to light: they go first, so that never happens.
    if (!isBlank(bytes)) holders.resize(1);
    for (auto holder = holders.rbegin(); holder != holders.rend(); ++holder) {
        OSA_CHECK(changes.change(*holder, edit(holder->form, bytes)));
    }
    return {};
}

Result<void> changeFinderInfo(PartChanges& changes, const Located& object, const FinderInfo* basic,
                              const ExtendedFinderInfo* extended) {
    if (!hasParts(object)) return Failure(unimpErr);
    OSA_TRY(const FinderInfoBytes old, findFinderInfo(object));
    FinderInfoBytes bytes = old;
    const bool isFolder = object.status.isFolder();
    if (basic != nullptr) setBasicFinderInfo(bytes, *basic, isFolder);
    if (extended != nullptr) setExtendedFinderInfo(bytes, *extended, isFolder);
    if (bytes == old) return {};
    return changeFinderInfo(changes, object, bytes);
}

Result<void> writeFinderInfo(const FSRef* ref, const FinderInfo* basic,
                             const ExtendedFinderInfo* extended) {
    OSA_TRY(const Located named, describeReference(ref));
    const PartsLock lock(named.folder());
    OSA_TRY(const Located object, locate(ref));
    PartChanges changes;
    OSA_CHECK(changeFinderInfo(changes, object, basic, extended));
    OSA_CHECK(changes.carryOut());
    changes.keep();
    return {};
}

}  // namespace osa
