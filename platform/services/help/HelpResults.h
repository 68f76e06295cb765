// The page that shows what a search of the help books has found.
#pragma once

#include <string>
#include <vector>

#include "platform/base/Result.h"
#include "platform/services/help/HelpBook.h"

namespace osa {

/// "file:" URL of an absolute path, which need not be UTF-8.
Result<std::string> fileURLOf(const std::string& path);

/// Writes the list, most hits first, to "Help Results.html" in the application's folder among the
/// user's caches, and answers its path. Whoever reads it meanwhile sees the old list or the new.
Result<std::string> writeHelpResults(const std::string& query, std::vector<HelpHit> hits);

}  // namespace osa
