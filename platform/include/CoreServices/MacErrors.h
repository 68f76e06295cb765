// Status values of the classic managers, by their published names.
#pragma once

// clang-format off
enum {
    noErr                       = 0,
    unimpErr                    = -4,       ///< the operation is not implemented
    dskFulErr                   = -34,      ///< all space on the volume is taken
    nsvErr                      = -35,      ///< no such volume
    ioErr                       = -36,      ///< input or output failed
    bdNamErr                    = -37,      ///< bad name
    fnOpnErr                    = -38,      ///< file not open
    eofErr                      = -39,      ///< end of file reached before the count was done
    posErr                      = -40,      ///< position before the start of the file
    tmfoErr                     = -42,      ///< too many files open
    fnfErr                      = -43,      ///< file not found
    wPrErr                      = -44,      ///< volume is write-protected
    fLckdErr                    = -45,      ///< file is locked
    vLckdErr                    = -46,      ///< volume is locked
    fBsyErr                     = -47,      ///< file is busy; folder is not empty
    dupFNErr                    = -48,      ///< name is taken
    opWrErr                     = -49,      ///< already open for writing
    paramErr                    = -50,      ///< bad parameter
    rfNumErr                    = -51,      ///< bad reference number
    permErr                     = -54,      ///< permission refused for reading
    wrPermErr                   = -61,      ///< writing through a read-only path
    memFullErr                  = -108,     ///< out of memory
    nilHandleErr                = -109,     ///< null master pointer or handle
    memWZErr                    = -111,     ///< not a live block
    dirNFErr                    = -120,     ///< folder not found
    userCanceledErr             = -128,
    resNotFound                 = -192,
    resFNotFound                = -193,
    addResFailed                = -194,
    rmvResFailed                = -196,
    resAttrErr                  = -198,     ///< attribute forbids the operation
    mapReadErr                  = -199,     ///< resource map is inconsistent
    CantDecompress              = -186,     ///< compressed resource that no decompressor here reads
    procNotFound                = -600,
    notAFileErr                 = -1302,    ///< a folder was given
    diffVolErr                  = -1303,
    fileBoundsErr               = -1309,    ///< size or position beyond what the call can express
    errFSBadFSRef               = -1401,
    errFSBadForkName            = -1402,
    errFSBadForkRef             = -1404,
    errFSMissingCatInfo         = -1406,
    errFSNotAFolder             = -1407,
    errFSForkNotFound           = -1409,
    errFSNameTooLong            = -1410,
    errFSMissingName            = -1411,
    errFSBadPosMode             = -1412,
    errFSNoMoreItems            = -1417,
    errFSRefsDifferent          = -1420,
    errFSForkExists             = -1421,
    errFSBadIteratorFlags       = -1422,
    errFSIteratorNotFound       = -1423,
    errAECoercionFail           = -1700,
    errAEDescNotFound           = -1701,
    errAECorruptData            = -1702,
    errAEWrongDataType          = -1703,
    errAENotAEDesc              = -1704,
    errAEBadListItem            = -1705,
    errAENotAppleEvent          = -1707,
    errAEEventNotHandled        = -1708,
    errAEParamMissed            = -1715,
    errAEHandlerNotFound        = -1717,
    errAEIllegalIndex           = -1719,
    errAENoSuchObject           = -1728,
    errAEBufferTooSmall         = -1741,
    pathTooLongErr              = -2110,
    cfStringConversionErr       = -4960,    ///< nothing of a string could be converted
    afpAccessDenied             = -5000,
    kTextMalformedInputErr      = -8739,
    kLSNotAnApplicationErr      = -10811,
    kLSApplicationNotFoundErr   = -10814
};
// clang-format on
