#pragma once

#include <stdexcept>
#include <string>

namespace quillmere::support {

/// The environment of a test is broken (a server did not start, a file could
/// not be written), as opposed to the program behaving wrongly. The support
/// library throws it everywhere, so that no test goes on in half an
/// environment.
class SupportError : public std::runtime_error {
public:
    explicit SupportError(const std::string& what) : std::runtime_error(what) {}
    /// Adds the text of `errno`.
    SupportError(const std::string& what, int errorNumber);
};

}  // namespace quillmere::support
