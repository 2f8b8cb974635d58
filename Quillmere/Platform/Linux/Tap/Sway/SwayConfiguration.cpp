#include "Quillmere/Platform/Linux/Tap/Sway/SwayConfiguration.h"

#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <sstream>

#include <wordexp.h>

namespace quillmere {

namespace {

// A file that includes itself is no reason to hang.
constexpr int deepest = 8;

bool isSpace(char letter) {
    return std::isspace(static_cast<unsigned char>(letter)) != 0;
}

/// The words of a line; what stands in quotation marks is one, without them.
std::vector<std::string> wordsOf(std::string_view line) {
    std::vector<std::string> words;
    bool isOpen = false;
    char quote = 0;
    for (const char letter : line) {
        if (quote == 0 && isSpace(letter)) {
            isOpen = false;
            continue;
        }
        if (!isOpen) words.emplace_back();
        isOpen = true;
        if (quote == letter)
            quote = 0;
        else if (quote == 0 && (letter == '"' || letter == '\''))
            quote = letter;
        else
            words.back() += letter;
    }
    return words;
}

std::string rest(const std::vector<std::string>& words, std::size_t first) {
    std::string text;
    for (std::size_t i = first; i < words.size(); ++i)
        text += (i == first ? "" : " ") + words[i];
    return text;
}

bool isBinding(const std::string& word) {
    return word == "bindsym" || word == "bindcode";
}

/// As a shell would write it, so that its place counts and not this program's.
std::string within(const std::filesystem::path& folder, const std::string& pattern) {
    const bool isAbsolute = pattern.find_first_of("/~$") == 0;
    if (isAbsolute) return pattern;
    std::string quoted;
    for (const char letter : folder.string())
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return '\'' + quoted + "/'" + pattern;
}

/// Whether it says in which of the keyboard's layouts the binding is.
bool isLayout(std::string_view part) {
    return part.starts_with("Group") || part == "Mode_switch";
}

}  // namespace

std::vector<ReservedCombination> SwayConfiguration::combinations(std::string_view text,
                                                                 const std::filesystem::path& file) {
    SwayConfiguration configuration;
    configuration.readText(text, file.parent_path());
    return configuration.combinations_;
}

void SwayConfiguration::readText(std::string_view text, const std::filesystem::path& folder) {
    std::istringstream stream{std::string(text)};
    std::string whole;
    for (std::string line; std::getline(stream, line);) {
        const bool goesOn = line.ends_with('\\');
        if (goesOn) line.pop_back();
        whole += line;
        if (goesOn) continue;
        readLine(whole, folder);
        whole.clear();
    }
    readLine(whole, folder);
}

void SwayConfiguration::readLine(const std::string& line, const std::filesystem::path& folder) {
    Words words = wordsOf(line);
    if (words.empty() || words.front().starts_with('#')) return;
    if (words.front() == "}") {
        if (!blocks_.empty()) blocks_.pop_back();
        return;
    }
    if (words == Words{"{"}) {
        openBlock(last_);
        return;
    }
    if (!blocks_.empty()) words.insert(words.begin(), blocks_.back().begin(), blocks_.back().end());
    last_ = words;
    if (words.back() == "{") {
        words.pop_back();
        openBlock(words);
        return;
    }
    readCommand(std::move(words), folder);
}

/// The lines of a mode are commands; those of a `bindsym` are what would follow
/// it; and those of anything else bind nothing.
void SwayConfiguration::openBlock(const Words& words) {
    const bool isPrefix = !words.empty() && words.front() != "mode";
    blocks_.push_back(isPrefix ? words : Words());
}

void SwayConfiguration::readCommand(Words words, const std::filesystem::path& folder) {
    if (words.front() == "set" && words.size() > 2) {
        variables_[words[1]] = withoutVariables(rest(words, 2));
        return;
    }
    words = wordsOf(withoutVariables(rest(words, 0)));
    if (words.size() < 2) return;
    if (words.front() == "include") include(rest(words, 1), folder);
    if (words.front() == "mode") {
        const std::size_t name = words[1] == "--pango_markup" ? 2 : 1;
        words.erase(words.begin(), words.begin() + static_cast<std::ptrdiff_t>(std::min(name + 1, words.size())));
    }
    if (!words.empty() && isBinding(words.front())) bind(words);
}

void SwayConfiguration::include(const std::string& pattern, const std::filesystem::path& folder) {
    if (depth_ == deepest) return;
    wordexp_t found{};
    // Never a command, which sway would run.
    if (wordexp(within(folder, pattern).c_str(), &found, WRDE_NOCMD) != 0) return;
    const std::vector<std::string> paths(found.we_wordv, found.we_wordv + found.we_wordc);
    wordfree(&found);
    for (const std::filesystem::path file : paths) {
        std::ifstream stream(file);
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        ++depth_;
        readText(text, file.parent_path());
        --depth_;
    }
}

void SwayConfiguration::bind(const Words& words) {
    std::size_t index = 1;
    while (index < words.size() && words[index].starts_with("--"))
        ++index;
    if (index == words.size()) return;
    ReservedCombination combination{.modifiers = 0, .keys = {}, .isByCode = words.front() == "bindcode"};
    std::istringstream parts(words[index]);
    for (std::string part; std::getline(parts, part, '+');) {
        if (isLayout(part)) continue;
        if (const auto modifier = modifierBits::named(part))
            combination.modifiers |= *modifier;
        else
            combination.keys.push_back(part);
    }
    combinations_.push_back(std::move(combination));
}

/// The longest of the names that fit is meant, as in sway.
std::string SwayConfiguration::withoutVariables(const std::string& text) const {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::string* value = nullptr;
        std::size_t length = 0;
        for (const auto& [name, contents] : variables_)
            if (text[at] == '$' && name.size() > length && text.compare(at, name.size(), name) == 0) {
                value = &contents;
                length = name.size();
            }
        result += value == nullptr ? text.substr(at, 1) : *value;
        at += value == nullptr ? 1 : length;
    }
    return result;
}

}  // namespace quillmere
