// The name of the one volume that colon-separated paths and the File Manager know: the whole tree
// below "/".
#pragma once

#include <string_view>

namespace osa {

inline constexpr std::u16string_view kBootVolumeName = u"Linux";

}  // namespace osa
