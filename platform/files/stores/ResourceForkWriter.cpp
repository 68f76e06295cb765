// Resource forks in side files.
#include "platform/files/stores/ResourceForkWriter.h"

#include <CoreServices/MacErrors.h>

#include "platform/files/formats/AppleDouble.h"
#include "platform/files/stores/ForkProbe.h"
#include "platform/files/stores/SideFiles.h"

namespace osa {

Result<void> createResourceFork(const FSRef& file, ByteSpan fork, OldFork old) {
    using Source = std::shared_ptr<const ByteSource>;
    const std::lock_guard lock(partsLock());
    OSA_TRY(const Located object, locate(&file));
    if (!object.status.isRegular()) return Failure(notAFileErr);
    OSA_TRY(const auto there, findResourceFork(object));
    if (old == OldFork::kept && there && there->size() > 0) return Failure(dupFNErr);
    const auto edited = [&](const Source& content) -> Result<Source> {
        OSA_TRY(const AppleDouble sideFile, AppleDouble::parse(content));
        return sideFile.withResourceFork(fork);
    };
    const auto written = writeDotUnderscoreFile(
        object, edited, [&] { return AppleDouble::make(FinderInfoBytes{}, fork); });
    forgetLastObject();
    return written;
}

}  // namespace osa
