// Navigation Services: what a file dialog answers. The dialogs themselves are not here.
#pragma once

#include <CoreFoundation/CFString.h>
#include <CoreServices/AEDataModel.h>
#include <CoreServices/Files.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef SInt16 ScriptCode;

/// One kind of translation of a chosen file. Nothing here makes or reads any.
typedef struct FileTranslationSpec FileTranslationSpec;
typedef FileTranslationSpec** FileTranslationSpecArrayHandle;

enum { kNavReplyRecordVersion = 2 };

/// What was chosen. The list, the handle and the string belong to whoever was given the record.
typedef struct NavReplyRecord {
    UInt16 version;
    Boolean validRecord;  ///< false: the user cancelled
    Boolean replacing;
    Boolean isStationery;
    Boolean translationNeeded;
    AEDescList selection;  ///< of a save dialog: the folder
    ScriptCode keyScript;
    FileTranslationSpecArrayHandle fileTranslation;
    UInt32 reserved1;
    CFStringRef saveFileName;  ///< of a save dialog, ":" where the disk has "/" and the reverse
    Boolean saveFileExtensionHidden;
    UInt8 reserved2;
    char reserved[225];
} NavReplyRecord;

#ifdef __cplusplus
}
#endif
