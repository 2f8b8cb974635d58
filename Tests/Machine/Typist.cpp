#include "Tests/Machine/Typist.h"

#include "Tests/Support/WaitUntil.h"

#include <array>
#include <chrono>

#include <linux/input-event-codes.h>

namespace quillmere::machine {

namespace {

constexpr std::array<std::uint16_t, 7> letters{KEY_Q, KEY_U, KEY_I, KEY_L, KEY_M, KEY_E, KEY_R};
constexpr std::chrono::milliseconds rhythm{10};

}  // namespace

Typist::Typist(VirtualKeyboard& keyboard) : keyboard_(keyboard), thread_([this] { type(); }) {}

Typist::~Typist() {
    stop();
}

std::vector<KeyStroke> Typist::stop() {
    isTyping_ = false;
    if (thread_.joinable()) thread_.join();
    return typed_;
}

void Typist::type() {
    for (std::size_t count = 0; isTyping_; ++count) {
        for (const KeyStroke& stroke : taps({letters.at(count % letters.size())})) {
            keyboard_.type({stroke});
            typed_.push_back(stroke);
            support::holdsFor([] { return true; }, rhythm);
        }
    }
}

}  // namespace quillmere::machine
