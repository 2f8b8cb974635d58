#include "Quillmere/Platform/Linux/Tap/Sway/SwayLeftovers.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <system_error>

namespace quillmere {

namespace {

/// Whatever stands in the file goes into a command.
bool isCombination(const std::string& text) {
    return !text.empty() && std::ranges::all_of(text, [](char letter) {
        return letter == '+' || std::isalnum(static_cast<unsigned char>(letter)) != 0;
    });
}

}  // namespace

SwayLeftovers::SwayLeftovers(const std::string& socket) : file_(socket + ".quillmere") {}

std::set<std::string> SwayLeftovers::read() const {
    std::set<std::string> combinations;
    std::ifstream stream(file_);
    for (std::string line; std::getline(stream, line);)
        if (isCombination(line)) combinations.insert(line);
    return combinations;
}

void SwayLeftovers::write(const std::set<std::string>& combinations) const {
    std::error_code ignored;
    if (combinations.empty()) {
        std::filesystem::remove(file_, ignored);
        return;
    }
    // In one step, so that a kill in between loses none.
    const std::filesystem::path part = file_.string() + ".part";
    {
        std::ofstream stream(part);
        for (const std::string& combination : combinations)
            stream << combination << '\n';
        if (!stream.flush()) return;
    }
    std::filesystem::rename(part, file_, ignored);
}

}  // namespace quillmere
