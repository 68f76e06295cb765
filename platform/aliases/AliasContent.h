// What an object on disk has to say as an alias.
#pragma once

#include <string>

#include "platform/aliases/AliasRecord.h"
#include "platform/files/References.h"

namespace osa {

struct AliasContent {
    enum class Kind {
        none,      ///< no alias
        link,      ///< a symbolic link
        record,    ///< an alias record
        bookmark,  ///< bookmark data alone, whose place stands in `record`
        damaged    ///< an alias by its flag, with nothing in it that can be read
    };

    Kind kind = Kind::none;
    std::string link;  ///< the text of a link
    AliasRecord record;
};

/// Of a link, or of a file with the alias flag: resource 'alis' 0, else bookmark data in the data
/// fork. A flagged file with neither is no alias. A failure when reading fails.
Result<AliasContent> aliasContent(const Located& object);
/// The same of a file whose data fork is a record or bookmark data, whatever its flags.
Result<AliasContent> bareAliasContent(const Located& object);

}  // namespace osa
