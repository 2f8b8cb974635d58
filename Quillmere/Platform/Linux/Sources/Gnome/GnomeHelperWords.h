#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"

#include <optional>
#include <sstream>
#include <string>
#include <string_view>

/// What the program and its helper for GNOME's settings say to each other: one
/// packet each way, a question and its answer, in text.
///
/// | question                  | answer                                            |
/// |---------------------------|---------------------------------------------------|
/// | "<number> state"          | "<number> <index of the current source>", and the |
/// |                           | list, a line each: "<type> <id>"                  |
/// | "<number> select\n<type> <id>" | "<number> done" or "<number> refused"        |
namespace quillmere::gnomehelper {

inline constexpr const char* askState = "state";
inline constexpr const char* askSelect = "select";
inline constexpr const char* done = "done";
inline constexpr const char* refused = "refused";

/// More than any list needs.
inline constexpr std::size_t longestPacket = 16'384;

/// A line each.
inline std::string textOf(const GnomeSourceList& list) {
    std::string text;
    for (const GnomeSource& source : list)
        text += source.type + ' ' + source.id + '\n';
    return text;
}

/// Reads such lines; what is none is left out.
inline GnomeSourceList listIn(const std::string& text) {
    GnomeSourceList list;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const std::size_t space = line.find(' ');
        if (space == std::string::npos || space == 0 || space + 1 == line.size()) continue;
        list.push_back({line.substr(0, space), line.substr(space + 1)});
    }
    return list;
}

}  // namespace quillmere::gnomehelper
