#pragma once

#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// Reads configurations of sway, as far as key bindings go: `bindsym` and
/// `bindcode` with their flags, in blocks and in modes, variables, lines that go
/// on, and files that are included. What a command that is started (`exec`) may
/// bind is not in it.
class SwayConfiguration {
public:
    /// Every combination that is bound in this text, in whichever mode. `file` is
    /// where the text is from, for what it includes; that is read from the disk.
    static std::vector<ReservedCombination> combinations(std::string_view text, const std::filesystem::path& file);

private:
    using Words = std::vector<std::string>;

    void readText(std::string_view text, const std::filesystem::path& folder);
    void readLine(const std::string& line, const std::filesystem::path& folder);
    void readCommand(Words words, const std::filesystem::path& folder);
    void openBlock(const Words& words);
    void include(const std::string& pattern, const std::filesystem::path& folder);
    void bind(const Words& words);
    std::string withoutVariables(const std::string& text) const;

    std::vector<ReservedCombination> combinations_;
    std::map<std::string, std::string> variables_;  ///< by their names, "$mod"
    std::vector<Words> blocks_;                     ///< what each open one puts in front of its lines
    Words last_;                                    ///< the line before, whose block may open on the next
    int depth_ = 0;                                 ///< of files within files
};

}  // namespace quillmere
