#include "Tests/Support/Environment.h"

#include <cstdlib>

namespace quillmere::support {

Environment baseEnvironment(const std::string& home) {
    Environment environment{{"HOME", home}, {"LANG", "C.UTF-8"}, {"USER", "tester"}};
    for (const char* name : {"PATH", "LD_LIBRARY_PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS", "TZ"})
        if (const char* value = std::getenv(name)) environment[name] = value;
    return environment;
}

}  // namespace quillmere::support
