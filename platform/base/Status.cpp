// The table behind describeStatus.
#include "platform/base/Status.h"

#include <CoreServices/MacErrors.h>

namespace osa {
namespace {

const char* statusName(OSStatus status) {
    // clang-format off
    switch (status) {
    case unimpErr: return "unimpErr";
    case dskFulErr: return "dskFulErr";
    case nsvErr: return "nsvErr";
    case ioErr: return "ioErr";
    case bdNamErr: return "bdNamErr";
    case fnOpnErr: return "fnOpnErr";
    case eofErr: return "eofErr";
    case posErr: return "posErr";
    case tmfoErr: return "tmfoErr";
    case fnfErr: return "fnfErr";
    case wPrErr: return "wPrErr";
    case fLckdErr: return "fLckdErr";
    case vLckdErr: return "vLckdErr";
    case fBsyErr: return "fBsyErr";
    case dupFNErr: return "dupFNErr";
    case opWrErr: return "opWrErr";
    case paramErr: return "paramErr";
    case rfNumErr: return "rfNumErr";
    case permErr: return "permErr";
    case wrPermErr: return "wrPermErr";
    case memFullErr: return "memFullErr";
    case nilHandleErr: return "nilHandleErr";
    case memWZErr: return "memWZErr";
    case dirNFErr: return "dirNFErr";
    case userCanceledErr: return "userCanceledErr";
    case resNotFound: return "resNotFound";
    case resFNotFound: return "resFNotFound";
    case addResFailed: return "addResFailed";
    case rmvResFailed: return "rmvResFailed";
    case resAttrErr: return "resAttrErr";
    case mapReadErr: return "mapReadErr";
    case CantDecompress: return "CantDecompress";
    case procNotFound: return "procNotFound";
    case notAFileErr: return "notAFileErr";
    case diffVolErr: return "diffVolErr";
    case fileBoundsErr: return "fileBoundsErr";
    case errFSBadFSRef: return "errFSBadFSRef";
    case errFSBadForkName: return "errFSBadForkName";
    case errFSBadForkRef: return "errFSBadForkRef";
    case errFSMissingCatInfo: return "errFSMissingCatInfo";
    case errFSNotAFolder: return "errFSNotAFolder";
    case errFSForkNotFound: return "errFSForkNotFound";
    case errFSNameTooLong: return "errFSNameTooLong";
    case errFSMissingName: return "errFSMissingName";
    case errFSBadPosMode: return "errFSBadPosMode";
    case errFSNoMoreItems: return "errFSNoMoreItems";
    case errFSRefsDifferent: return "errFSRefsDifferent";
    case errFSForkExists: return "errFSForkExists";
    case errFSBadIteratorFlags: return "errFSBadIteratorFlags";
    case errFSIteratorNotFound: return "errFSIteratorNotFound";
    case errAECoercionFail: return "errAECoercionFail";
    case errAEDescNotFound: return "errAEDescNotFound";
    case errAECorruptData: return "errAECorruptData";
    case errAEWrongDataType: return "errAEWrongDataType";
    case errAENotAEDesc: return "errAENotAEDesc";
    case errAEBadListItem: return "errAEBadListItem";
    case errAENotAppleEvent: return "errAENotAppleEvent";
    case errAEEventNotHandled: return "errAEEventNotHandled";
    case errAEParamMissed: return "errAEParamMissed";
    case errAEHandlerNotFound: return "errAEHandlerNotFound";
    case errAEIllegalIndex: return "errAEIllegalIndex";
    case errAENoSuchObject: return "errAENoSuchObject";
    case errAEBufferTooSmall: return "errAEBufferTooSmall";
    case pathTooLongErr: return "pathTooLongErr";
    case cfStringConversionErr: return "cfStringConversionErr";
    case afpAccessDenied: return "afpAccessDenied";
    case kTextMalformedInputErr: return "kTextMalformedInputErr";
    case kLSNotAnApplicationErr: return "kLSNotAnApplicationErr";
    case kLSApplicationNotFoundErr: return "kLSApplicationNotFoundErr";
    default: return nullptr;
    }
    // clang-format on
}

}  // namespace

std::string describeStatus(OSStatus status) {
    const std::string number = std::to_string(status);
    const char* const name = statusName(status);
    return name == nullptr ? number : std::string(name) + " (" + number + ")";
}

}  // namespace osa
