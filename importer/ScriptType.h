// Which of nine kinds of script a file is, by its type and creator and by what it holds.
#pragma once

#include <CoreServices/MacTypes.h>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

using ScriptType = UInt32;

// clang-format off
enum : ScriptType {
    kScriptTypeText           = 1,  ///< source as text, or an untyped file that is no data-fork script
    kScriptTypeDataForkScript = 2,  ///< compiled script that fills the data fork
    kScriptTypeResourceScript = 3,  ///< compiled script in the resource fork
    kScriptTypeBundleScript   = 4,  ///< script bundle
    kScriptTypeCarbonApplet   = 5,  ///< applet file with a 'plst' 0 resource
    kScriptTypeBundleApplet   = 6,  ///< application bundle around a script
    kScriptTypeClassicApplet  = 7,  ///< applet file without a 'plst' 0 resource
    kScriptTypeExcluded       = 8,  ///< of a type that is never imported
    kScriptTypeUnknown        = 9
};
// clang-format on

/// The kind. Throws the status of reading the item's type and creator: fnfErr for a missing item
/// and for a folder that is no bundle.
ScriptType GetScriptType(const CFileSpec& spec);

// The tests behind it: 1 or 0. None throws: what cannot be looked at answers 0.

/// Whether the data fork is longer than four bytes and ends in FA DE DE AD.
SInt32 IsDataForkScript(const CFileSpec& spec);
/// Whether the item is a bundle whose resources folder holds "Scripts/main.scpt".
SInt32 IsBundleScript(const CFileSpec& spec);
SInt32 IsBundleApplet(const CFileSpec& spec);
/// Whether the file's resources, wherever it keeps them, hold 'plst' 0.
SInt32 IsCarbonApplet(const CFileSpec& spec);
