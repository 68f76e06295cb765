// GetMetadataForFile: the one operation of the importer.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>

#define OSA_IMPORTER_EXPORT extern "C" __attribute__((visibility("default")))

/// Adds the description, the source text and the saved attributes of the script at the POSIX path
/// to `attributes`; a later one replaces an earlier one of the same key. Neither the interface nor
/// the content type is used: the file itself tells its kind.
///
/// True for the kinds 2 to 7 (ScriptType.h) unless something failed. A failure is one line on the
/// standard error stream, and what was set before it stays. A text script is false whatever was
/// set, and silent. Keeps nothing between calls: different files may be read on different threads
/// at once.
OSA_IMPORTER_EXPORT Boolean GetMetadataForFile(void* thisInterface,
                                               CFMutableDictionaryRef attributes,
                                               CFStringRef contentTypeUTI, CFStringRef pathToFile);
