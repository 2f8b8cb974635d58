#include "Packaging/demonstration/Sight.h"

#include <algorithm>
#include <iostream>

namespace quillmere::demonstration {

namespace {

constexpr std::size_t actionColumns = 22;

/// Characters on a terminal: every code point that continues none takes one.
std::size_t columns(const std::string& utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

std::string padded(const std::string& action) {
    const std::size_t used = columns(action);
    return action + std::string(used < actionColumns ? actionColumns - used : 1, ' ');
}

}  // namespace

void Sight::heading(const std::string& text) {
    std::cout << '\n' << text << '\n';
}

bool Sight::expect(const std::string& action, const std::string& what, bool isSeen) {
    std::cout << (isSeen ? "  ✓ " : "  ✗ ") << padded(action) << what << (isSeen ? "" : "  (not seen)") << "\n"
              << std::flush;
    if (isSeen)
        ++seen_;
    else
        missed_.push_back(action.empty() ? what : action + ": " + what);
    return isSeen;
}

void Sight::remark(const std::string& text) {
    std::cout << "    " << text << '\n';
}

}  // namespace quillmere::demonstration
