#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace quillmere {

/// What this program has bound in sway, written down beside sway's socket: sway
/// keeps runtime bindings until it reloads and tells nobody of them, so the next
/// program could not take back what a killed one has left. The file is there
/// only while something is bound. Main thread only.
class SwayLeftovers {
public:
    /// `socket` is sway's own: another sway has other bindings.
    explicit SwayLeftovers(const std::string& socket);

    /// The combinations that may be bound.
    std::set<std::string> read() const;
    /// Replaces them. Without a place to write it does nothing.
    void write(const std::set<std::string>& combinations) const;

private:
    std::filesystem::path file_;
};

}  // namespace quillmere
