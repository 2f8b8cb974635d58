#include "Tests/Support/SupportError.h"

#include <system_error>

namespace quillmere::support {

SupportError::SupportError(const std::string& what, int errorNumber)
    : std::runtime_error(what + ": " + std::generic_category().message(errorNumber)) {}

}  // namespace quillmere::support
