#pragma once

#include <string>

namespace quillmere {

/// One row of the doctor's page. A value.
struct Finding {
    std::string subject;  ///< what it is about, in a word or two
    std::string state;    ///< how that is; several lines where there are several things
    std::string advice;   ///< what to do about it; empty where nothing is wrong

    friend bool operator==(const Finding&, const Finding&) = default;
};

}  // namespace quillmere
