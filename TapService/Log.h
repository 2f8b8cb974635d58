#pragma once

#include <string_view>

/// One line for an administrator, on standard error. It says what the service
/// cannot do and why; never a key, nor anything that follows from one.
namespace quillmere::tap::Log {

void error(std::string_view text);    ///< the service ends, or is of no use
void warning(std::string_view text);  ///< something does not work as it should
void notice(std::string_view text);   ///< what an administrator may want to know

/// `text`, and what the error number means.
void notice(std::string_view text, int error);
void warning(std::string_view text, int error);
void error(std::string_view text, int error);

}  // namespace quillmere::tap::Log
