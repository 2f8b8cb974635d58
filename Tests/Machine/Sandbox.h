#pragma once

#include <string>
#include <vector>

namespace quillmere::machine {

/// Shell commands, each tried in the key-tap service's place: as its user, with
/// what its unit leaves it. Throws SupportError when they cannot be tried.
class Sandbox {
public:
    using Commands = std::vector<std::string>;

    /// Tries them, which takes some seconds however few they are.
    explicit Sandbox(const Commands& commands);

    /// Those of these that succeeded.
    Commands succeeding(const Commands& commands) const { return common(commands, succeeded_); }
    /// Those that root outside of the service's walls succeeds with, to see that
    /// it is the walls that hold.
    Commands succeedingAsRoot(const Commands& commands) const { return common(commands, succeededAsRoot_); }

private:
    static Commands common(const Commands& commands, const Commands& succeeded);

    Commands succeeded_;
    Commands succeededAsRoot_;
};

}  // namespace quillmere::machine
