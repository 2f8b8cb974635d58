#pragma once

#include <functional>
#include <vector>

namespace quillmere::bench {

/// The main function of a benchmark that takes these arguments, of which the
/// usage tells: an application object, and what is thrown told and turned into
/// an exit code.
int run(int argc, char** argv, const std::vector<const char*>& arguments, const std::function<void()>& measure);

}  // namespace quillmere::bench
