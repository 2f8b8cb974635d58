#pragma once

#include <string>
#include <vector>

namespace quillmere::demonstration {

/// Tells on the terminal what was seen and what was not, and keeps count.
class Sight {
public:
    /// Begins a scene.
    static void heading(const std::string& text);

    /// One thing to be seen, after `action` (a key, a click; may be empty).
    /// Returns `isSeen`.
    bool expect(const std::string& action, const std::string& what, bool isSeen);

    /// Something to know besides.
    static void remark(const std::string& text);

    int seen() const { return seen_; }
    const std::vector<std::string>& missed() const { return missed_; }

private:
    int seen_ = 0;
    std::vector<std::string> missed_;
};

}  // namespace quillmere::demonstration
