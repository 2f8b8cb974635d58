#include "Tests/Support/Typist.h"
#include "Tests/Support/SupportError.h"

#include <cstdlib>
#include <iostream>
#include <sstream>
#include <string>

namespace {

using quillmere::support::Key;
using quillmere::support::Strokes;

/// "37+64+65": all pressed one after the other, and released the other way round.
void addChord(Strokes& strokes, const std::string& chord) {
    std::vector<Key> keys;
    std::istringstream text(chord);
    for (std::string number; std::getline(text, number, '+');)
        keys.push_back(static_cast<Key>(std::stoul(number)));
    for (const Key key : keys)
        strokes.press(key);
    for (auto key = keys.rbegin(); key != keys.rend(); ++key)
        strokes.release(*key);
}

}  // namespace

/// Types the keys of its arguments, X keycodes, on $DISPLAY. Unlike other such
/// programs it leaves the layout alone.
int main(int argc, char** argv) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || argc < 2) {
        std::cerr << "usage: DISPLAY=<display> " << argv[0] << " <keycode>[+<keycode>...]...\n";
        return 2;
    }
    Strokes strokes;
    for (int index = 1; index < argc; ++index)
        addChord(strokes, argv[index]);
    try {
        quillmere::support::Typist(display).play(strokes);
    } catch (const quillmere::support::SupportError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
