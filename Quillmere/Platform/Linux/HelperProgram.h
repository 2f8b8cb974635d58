#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace quillmere::HelperProgram {

/// Where one of the program's own helpers lies, of this build or installed,
/// whichever the running program is.
std::string path(const std::string& name);

/// Starts it with `socket` as its standard input, in a session of its own:
/// what a terminal stops or ends is a whole group of processes. 0 when it
/// cannot be started. The caller waits for its end. Any thread.
pid_t start(const std::string& program, const std::vector<std::string>& arguments, int socket);

}  // namespace quillmere::HelperProgram
