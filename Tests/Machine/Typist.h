#pragma once

#include "Tests/Machine/Monitor.h"
#include "Tests/Machine/VirtualKeyboard.h"

#include <atomic>
#include <thread>
#include <vector>

namespace quillmere::machine {

/// Somebody who types letters faster than anybody can, one after the other and
/// without ever looking up, until told to stop.
class Typist {
public:
    /// Nobody else may use the keyboard meanwhile.
    explicit Typist(VirtualKeyboard& keyboard);
    ~Typist();
    Typist(const Typist&) = delete;
    Typist& operator=(const Typist&) = delete;

    /// Everything that was typed.
    std::vector<KeyStroke> stop();

private:
    void type();

    VirtualKeyboard& keyboard_;
    std::vector<KeyStroke> typed_;
    std::atomic<bool> isTyping_ = true;
    std::thread thread_;
};

}  // namespace quillmere::machine
