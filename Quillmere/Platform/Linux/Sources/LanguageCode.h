#pragma once

#include <string>

namespace quillmere {

/// The language's own part of a locale's name: "zh" of "zh_CN"; empty for what
/// begins with none.
inline std::string languageCode(const std::string& locale) {
    return locale.substr(0, locale.find_first_of("_-@.*"));
}

}  // namespace quillmere
