// Where an application keeps its own files, and the user's folders.
//
// The application is the running one (Applications.h). Its locations, in the order in which they
// are searched: the folder of the application's name in the user's application-support folder; the
// folder that the application lies in; the "Contents" folder of its bundle; "Resources" in that.
#pragma once

#include <vector>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

/// The file or folder `name` in the first location that has one. Throws when there is no "Contents"
/// folder to search, or nothing of that name in the last.
CFileSpec FindInSupportFolder(const TCLString& name);

/// All folders, bundles included, whose name ends in `extension` (FileVisitor.h), in the order of
/// their names' units. Of folders of one name the first location's is taken. A location that is not
/// there counts as empty, but a missing "Contents" folder throws.
std::vector<CFileSpec> FindInSupportFolderOfType(const TCLString& extension);
/// The same in the folder `subfolder` of each location.
std::vector<CFileSpec> FindInSupportFolderOfType(const TCLString& extension,
                                                 const TCLString& subfolder);

// What follows is made when it is missing; failures are thrown.

/// The folder `name` in the application's support folder.
CFileSpec MakeInSupportFolder(const TCLString& name);
/// The application's own folder in the user's caches folder.
CFileSpec GetCacheFolder();
CFileSpec GetHomeFolder();
/// The user's preferences folder: callers rely on files that were put there under this name.
CFileSpec GetDesktopFolder();
CFileSpec GetTempFolder();
