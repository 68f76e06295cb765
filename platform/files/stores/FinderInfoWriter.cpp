// Finding the place for Finder information and changing it there.
#include "platform/files/stores/FinderInfoWriter.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {
namespace {

using Form = FinderInfoPlace::Form;
using Source = std::shared_ptr<const ByteSource>;

// More places than this are not cleared for one object.
constexpr int kMostPlaces = 16;

/// What holds the Finder information, with `bytes` in it.
Result<Source> edited(Form form, const Source& holder, const FinderInfoBytes& bytes) {
    constexpr std::uint64_t kOffsetInAfpInfo = 16;
    if (form == Form::bare) return overlaid(holder, 0, bytes);
    if (form == Form::afpInfo) return overlaid(holder, kOffsetInAfpInfo, bytes);
    OSA_TRY(const AppleDouble file, AppleDouble::parse(holder));
    return file.withFinderInfo(bytes);
}

Result<void> writeToAttribute(const std::string& path, const FinderInfoPlace& place,
                              const FinderInfoBytes& bytes) {
    OSA_TRY(auto old, posix::attribute(path, place.attribute));
    OSA_TRY(const Source made,
            edited(place.form, std::make_shared<MemorySource>(std::move(old)), bytes));
    OSA_TRY(const auto value, readRange(*made, {0, made->size()}));
    return posix::setAttribute(path, place.attribute, value);
}

Result<void> writeToFile(const std::string& path, Form form, const FinderInfoBytes& bytes) {
    // A link to a side file stays one.
    OSA_TRY(const std::string target, posix::realPath(path));
    OSA_TRY(const auto file, posix::openFile(target, posix::Follow::no));
    OSA_TRY(const Source content, edited(form, file, bytes));
    return posix::replaceFile(target, *content, file->status());
}

Result<void> writeToPlace(const Located& object, const StoredParts& keeper,
                          const FinderInfoBytes& bytes) {
    const FinderInfoPlace& place = keeper.infoPlace;
    if (place.attribute != nullptr) return writeToAttribute(object.path(), place, bytes);
    return writeToFile(keeper.witnesses[place.witness].path, place.form, bytes);
}

Result<void> writeToSideFile(const Located& object, const FinderInfoBytes& bytes) {
    return writeDotUnderscoreFile(
        object, [&](const Source& old) { return edited(Form::appleDouble, old, bytes); },
        [&] { return AppleDouble::make(bytes); });
}

/// `keeper` null: nobody keeps any.
Result<void> write(const Located& object, const StoredParts* keeper, const FinderInfoBytes& bytes) {
    if (keeper == nullptr) return writeToSideFile(object, bytes);
    OSA_CHECK(writeToPlace(object, *keeper, bytes));
    // Where one place is blanked, a later one with other information would come to light.
    for (int left = kMostPlaces; isBlank(bytes) && left > 0; --left) {
        forgetLastObject();
        OSA_TRY(keeper, findFinderInfoKeeper(object));
        if (keeper == nullptr) break;
        OSA_CHECK(writeToPlace(object, *keeper, bytes));
    }
    return {};
}

}  // namespace

Result<void> writeFinderInfo(const FSRef* ref, const FinderInfo* basic,
                             const ExtendedFinderInfo* extended) {
    const std::lock_guard lock(partsLock());
    OSA_TRY(const Located object, locate(ref));
    if (!hasParts(object)) return Failure(unimpErr);
    OSA_TRY(const StoredParts* const keeper, findFinderInfoKeeper(object));
    const FinderInfoBytes old = keeper == nullptr ? FinderInfoBytes{} : keeper->finderInfo;
    FinderInfoBytes bytes = old;
    const bool isFolder = object.status.isFolder();
    if (basic != nullptr) setBasicFinderInfo(bytes, *basic, isFolder);
    if (extended != nullptr) setExtendedFinderInfo(bytes, *extended, isFolder);
    if (bytes == old) return {};
    const auto written = write(object, keeper, bytes);
    forgetLastObject();
    return written;
}

}  // namespace osa
