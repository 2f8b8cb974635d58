#pragma once

#include "Tests/Machine/VirtualKeyboard.h"

#include <map>
#include <string>
#include <thread>

namespace quillmere::machine {

/// Another program that stands between the keyboards and the desktop: it takes
/// every keyboard but its own, which it knows by its ids, and types all keys
/// on that one. Works on a thread of its own. Throws SupportError.
class Remapper {
public:
    static constexpr const char* keyboardName = "Remapper keyboard";

    Remapper();
    ~Remapper();
    Remapper(const Remapper&) = delete;
    Remapper& operator=(const Remapper&) = delete;

private:
    void run();
    void takeNewKeyboards();
    void take(const std::string& node);
    void pass(int descriptor);

    VirtualKeyboard keyboard_{{.name = keyboardName}};
    std::map<std::string, int> taken_;  ///< nodes, and their open files; -1: left alone
    int stop_ = -1;
    std::thread thread_;
};

}  // namespace quillmere::machine
