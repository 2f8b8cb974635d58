#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>
#include <vector>

namespace quillmere::support {

/// One story of a tap: which shortcuts are of interest, what the fingers do,
/// what everybody else gets of it, and what the tap's program is told.
struct KeyStory {
    const char* title;  ///< a sentence, and without its spaces the test's name
    std::vector<std::string> wishes;
    const char* words;
    const char* output;
    const char* told;
};

inline void PrintTo(const KeyStory& story, std::ostream* stream) {
    *stream << story.title;
}

/// "a key of no interest passes" is AKeyOfNoInterestPasses.
inline std::string nameOfStory(const testing::TestParamInfo<KeyStory>& instance) {
    std::string name;
    bool capital = true;
    for (const char* letter = instance.param.title; *letter != '\0'; ++letter) {
        const bool isLetter = std::isalnum(static_cast<unsigned char>(*letter)) != 0;
        if (isLetter) name += capital ? static_cast<char>(std::toupper(*letter)) : *letter;
        capital = !isLetter;
    }
    return name;
}

}  // namespace quillmere::support
