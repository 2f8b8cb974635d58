#include "Quillmere/Platform/Linux/Plate/PlateFade.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

// About 60 Hz, and only while a fade runs.
constexpr auto stepTime = 16ms;

}  // namespace

PlateFade::PlateFade(std::function<void(double alpha)> apply) : apply_(std::move(apply)) {
    steps_.setTimerType(Qt::PreciseTimer);
    steps_.setInterval(stepTime);
    QObject::connect(&steps_, &QTimer::timeout, &steps_, [this] { step(); });
}

void PlateFade::set(double alpha) {
    ++number_;
    way_.reset();
    steps_.stop();
    apply(alpha);
}

void PlateFade::run(double alpha, double seconds, bool isStepped, std::function<void()> completion) {
    const int number = ++number_;
    way_ = Way{.from = alpha_, .to = alpha, .seconds = seconds, .clock = {}};
    way_->clock.start();
    if (isStepped) steps_.start();
    const auto duration = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
    QTimer::singleShot(duration, Qt::PreciseTimer, &steps_,
                       [this, number, completion = std::move(completion)] { end(number, completion); });
}

void PlateFade::step() {
    const double passed = static_cast<double>(way_->clock.nsecsElapsed()) / 1e9;
    const double done = std::min(passed / way_->seconds, 1.0);
    apply(way_->from + (way_->to - way_->from) * done);
}

void PlateFade::end(int number, const std::function<void()>& completion) {
    if (number == number_) set(way_->to);
    if (completion) completion();
}

void PlateFade::apply(double alpha) {
    alpha_ = alpha;
    apply_(alpha);
}

}  // namespace quillmere
