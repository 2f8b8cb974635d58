#pragma once

#include <cstdint>
#include <string_view>

namespace quillmere {

/// What the keys are called on this system's keyboards, in English.
struct KeyWords {
    std::string_view control;
    std::string_view option;
    std::string_view shift;
    std::string_view command;
    /// The word for a key by its virtual code; empty for one without another
    /// name than the shortcut's own text has for it.
    std::string_view (*key)(std::int64_t keyCode);
};

/// The running system's own. Any thread.
KeyWords keyWords();

}  // namespace quillmere
