// Copying forks of a file into another file.
#pragma once

#include <CoreServices/Files.h>

#include "Libraries/MacToolboxLib/TBUtilities/CFileSpec.h"

/// Makes the fork `forkName` of the file `destName` in `destFolder` the same as that of `source`.
/// The file is made when there is none, and stays when something fails later; its fork then holds
/// what it held before, as far as the system still lets it be put back. opWrErr, and nothing
/// changes, when it is the source itself. Every status is thrown.
void CopyFork(const CFileSpec& source, const CFileSpec& destFolder, const HFSUniStr255& destName,
              const HFSUniStr255& forkName);
void CopyDataFork(const CFileSpec& source, const CFileSpec& destFolder,
                  const HFSUniStr255& destName);
void CopyResourceFork(const CFileSpec& source, const CFileSpec& destFolder,
                      const HFSUniStr255& destName);
