#include "Quillmere/Doctor/Report.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quillmere {

namespace {

/// The text with each of its further lines this far to the right.
std::string indented(std::string_view text, std::size_t width) {
    std::string result;
    for (const char character : text) {
        result += character;
        if (character == '\n') result.append(width, ' ');
    }
    return result;
}

}  // namespace

std::string report(const std::vector<Finding>& rows) {
    std::size_t width = 0;
    for (const Finding& row : rows)
        width = std::max(width, row.subject.size() + 2);
    std::string page;
    for (const Finding& row : rows) {
        page += row.subject;
        page.append(width - row.subject.size(), ' ');
        page += indented(row.state, width) + '\n';
        if (row.advice.empty()) continue;
        page.append(width, ' ');
        page += "-> ";
        page += indented(row.advice, width + 3) + '\n';
    }
    return page;
}

}  // namespace quillmere
