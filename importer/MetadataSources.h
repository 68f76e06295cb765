// Where a script's metadata is stored, and how each place is read into the attributes. Failures are
// thrown: a status by the library, an NSException by what the Foundation layer reads.
#pragma once

#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFURL.h>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

/// Compiled scripts and applets: resources 'TEXT' 1128 and 2000, and the archive 'CWst' 128, which
/// goes before both.
void ImportResourceScript(const CFileSpec& spec, CFMutableDictionaryRef attributes);

/// Script bundles and bundle applets: the rich-text description, the saved copy of the source and
/// the editor's list file, which goes before both.
void ImportBundleScript(CFURLRef itemURL, CFMutableDictionaryRef attributes);

/// Text scripts: resource 'TEXT' 1128 and the editor's list file.
void ImportTextScript(const CFileSpec& spec, CFURLRef itemURL, CFMutableDictionaryRef attributes);
