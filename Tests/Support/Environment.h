#pragma once

#include <map>
#include <string>

namespace quillmere::support {

/// The environment variables of a child process, all of them: nothing is
/// inherited beside it.
using Environment = std::map<std::string, std::string>;

/// What every child needs whatever it is: the search path, a UTF-8 locale and
/// the options of the sanitizers. `home` becomes the home folder.
Environment baseEnvironment(const std::string& home);

}  // namespace quillmere::support
