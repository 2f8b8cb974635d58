#pragma once

#include <optional>
#include <string>
#include <vector>

/// The input sources of a Mac that a test sets up.
namespace textinput {

struct Source {
    std::optional<std::string> id;
    std::string type = "TISTypeKeyboardLayout";
    std::optional<std::string> name;
    std::vector<std::string> languages;
    std::optional<std::string> languageText;  ///< in place of the languages: no list
    bool isEnabled = true;
    bool isSelectCapable = true;
};

extern std::vector<Source> installed;
extern std::optional<std::size_t> current;  ///< among the installed ones
extern int refusal;                         ///< the status of the next selections, when it is not 0
extern bool listsAll;                       ///< also what was not asked for
extern bool answers;                        ///< otherwise there is no list at all

/// How often something was selected.
int selections();
/// No sources.
void reset();

}  // namespace textinput
