// Cuts HTML into tags and text, as forgiving as pages are careless.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/ByteReader.h"

namespace osa {

/// The input is in an encoding that contains ASCII; texts keep it, and decoded characters come in
/// UTF-8.
struct MarkupToken {
    enum class Kind : UInt8 { end, text, opening, closing };
    struct Attribute {
        std::string name;  ///< lower case
        std::string value;
    };

    Kind kind = Kind::end;
    std::string text;  ///< of text, entities decoded; of a tag its name in lower case
    std::vector<Attribute> attributes = {};  ///< the first 64

    /// Empty when there is none.
    std::string_view attribute(std::string_view name) const;
};

/// Comments, declarations, scripts and style sheets are not given.
class MarkupLexer {
  public:
    explicit MarkupLexer(ByteSpan bytes) : in_(bytes) {}
    MarkupToken next();

  private:
    MarkupToken tag(MarkupToken::Kind kind);
    MarkupToken::Attribute attribute();
    std::string value();
    void skipDeclaration();
    void skipBefore(std::string_view lowerCase);

    ByteReader in_;
};

/// ASCII letters only.
std::string lowerCase(std::string_view text);

}  // namespace osa
