// The table from errno values to statuses.
#include "platform/posix/ErrnoStatus.h"

#include <CoreServices/MacErrors.h>

#include <cerrno>

namespace osa::posix {
namespace {

OSStatus refused(Intent intent) {
    switch (intent) {
        case Intent::read:
            return permErr;
        case Intent::write:
            return wrPermErr;
        case Intent::changeCatalog:
            return afpAccessDenied;
    }
    return permErr;
}

}  // namespace

OSStatus statusFromErrno(int error, Intent intent) {
    switch (error) {
        case ENOENT:
        case ELOOP:  // links in a circle lead nowhere
        case ENOTDIR:
            return fnfErr;
        case EEXIST:
            return dupFNErr;
        case ENOTEMPTY:
        case EBUSY:  // a folder on which a volume is mounted
            return fBsyErr;
        case EACCES:
        case EPERM:
        case ETXTBSY:  // a program that is running
            return refused(intent);
        case EROFS:
            return wPrErr;
        case ENOSPC:
        case EDQUOT:
            return dskFulErr;
        case EFBIG:
            return fileBoundsErr;
        case EXDEV:
            return diffVolErr;
        case EISDIR:
            return notAFileErr;
        case ENAMETOOLONG:
            return errFSNameTooLong;
        case ENOMEM:
            return memFullErr;
        case EMFILE:
        case ENFILE:
            return tmfoErr;
        default:
            return ioErr;
    }
}

}  // namespace osa::posix
