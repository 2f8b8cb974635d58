#include "Benchmarks/Choice.h"

#include "Tests/Support/WaitUntil.h"

#include <array>
#include <stdexcept>

namespace quillmere::bench {

namespace keys = support::keys;

namespace {

// What a switch still has to do when it has been seen, whatever it is: no
// choice's rest is to be in another one's time.
constexpr double rest = 20;

}  // namespace

double Choice::timeSwitch() {
    support::Typist& typist = desktop_.typist();
    typist.press(modifier_);
    pause(2);
    change().reset();
    const Clock::time_point start = Clock::now();
    typist.press(keys::space);
    const double time = change().await(start);
    typist.release(keys::space);
    typist.release(modifier_);
    pause(rest);
    return time;
}

void Choice::waitUntilReady() {
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt)
        if (timeSwitch() >= 0) return;
    throw std::runtime_error(name_ + " does not switch");
}

void Choice::openTextField() {
    stopListening();
    field_.emplace(desktop_.folder(), desktop_.environment(), textMethod());
}

void Choice::typeBurst() {
    const std::string before = typed(support::Strokes().tap(keys::a));
    const std::string after = typed(support::Strokes().chord(std::array{modifier_}, keys::space).tap(keys::a));
    if (before.empty() || after.empty())
        ++lost_;
    else if (after == before)
        ++wrong_;
    support::holdsFor([] { return true; }, std::chrono::milliseconds(50));
}

std::string Choice::typed(const support::Strokes& strokes) {
    const std::string text = field_->text();
    std::string more;
    desktop_.typist().play(strokes);
    support::waitUntil(
        [&] {
            more = field_->text().substr(text.size());
            return more.ends_with("a") || more.ends_with("ф");
        },
        std::chrono::seconds(2));
    return more;
}

}  // namespace quillmere::bench
