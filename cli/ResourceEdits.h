// Changes to the resources of a file, as the command line asks for them.
#pragma once

#include <CoreServices/MacTypes.h>

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace osa::cli {

struct ResourceEdit {
    enum class Kind { set, remove, rename };
    Kind kind = Kind::set;
    ResType type = 0;
    SInt16 id = 0;
    std::string value;                      ///< set: the file with the data, then the data
    std::array<unsigned char, 256> name{};  ///< rename: Mac Roman, length first
};

/// TYPE:ID, with "=" and a file or a name (UTF-8) behind it where the kind has one. An empty reason
/// says that there is an edit.
std::string parseResourceEdit(ResourceEdit::Kind kind, std::string_view text, ResourceEdit& edit);

/// Replaces each file's name by its content. Answers the first that fails, or an empty name.
std::string readEditData(std::vector<ResourceEdit>& edits);

/// Makes all changes to the file's resource fork, or to its data fork when that is a bare one, in
/// their order, and writes them at once: all, or none and a reason why not. Protected resources
/// whose data was set are protected again after that. A file without a fork gets one if something
/// is set and nothing asked for that it has not.
std::string applyResourceEdits(const std::string& file, const std::vector<ResourceEdit>& edits);

}  // namespace osa::cli
