// Cuts rich text into its tokens.
#pragma once

#include <string_view>

#include "platform/base/ByteReader.h"

namespace osa {

struct RtfToken {
    enum class Kind : UInt8 {
        end,
        open,       ///< {
        close,      ///< }
        word,       ///< \name, perhaps with a number
        symbol,     ///< \ and a character that is no letter: `byte`
        character,  ///< `byte`, from the text itself or from \'hh
    };
    Kind kind = Kind::end;
    UInt8 byte = 0;
    bool hasNumber = false;
    SInt32 number = 0;  ///< clamped
    std::string_view name = {};
};

/// Ends of lines and NULs in the text mean nothing and are not given. The bytes behind \bin are
/// skipped with it.
class RtfLexer {
  public:
    explicit RtfLexer(ByteSpan bytes) : in_(bytes) {}
    RtfToken next();

  private:
    RtfToken control();
    RtfToken word();

    ByteReader in_;
};

}  // namespace osa
