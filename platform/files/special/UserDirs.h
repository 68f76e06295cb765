// The desktop's user-dirs.dirs: where the user's desktop, documents and the like are.
#pragma once

#include <string>
#include <string_view>

namespace osa {

/// The path that the file's lines KEY="$HOME/name" or KEY="/name" give the key, without slashes at
/// its end; the home itself when the folder is switched off by naming that. The last such line
/// counts, as for a shell. Empty when there is none.
std::string userDirectory(std::string_view lines, std::string_view key, const std::string& home);

}  // namespace osa
