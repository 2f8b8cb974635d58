#pragma once

#include <string_view>

namespace quillmere {

/// Which characters `trimmed` takes away.
enum class Whitespace {
    blanks,            ///< the tab and Unicode's space separators, no line break
    blanksAndNewlines  ///< also the line and paragraph breaks (U+000A to U+000D, U+0085, U+2028, U+2029)
};

/// `text` without such characters at both ends. `text` must be well-formed
/// UTF-8; the result points into it.
std::string_view trimmed(std::string_view text, Whitespace whitespace);

}  // namespace quillmere
