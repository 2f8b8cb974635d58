#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/VerdictPort.h"
#include "Tests/X11Tap/FakeX11Keyboard.h"

#include <functional>
#include <set>
#include <string>

namespace quillmere::support {

/// A program behind the tap that writes down what it is told, as
/// "ask:ctrl+space repeat:ctrl+space release:ctrl+space flags:fn+ other", and
/// knows what it may be told.
class FakeVerdicts : public VerdictPort {
public:
    enum class Answer { swallow, pass, late };

    /// `keyboard` must outlive this.
    explicit FakeVerdicts(FakeX11Keyboard& keyboard) : keyboard_(keyboard) {}

    std::string log;
    /// What it says to the next question.
    std::function<Answer()> answer = [] { return Answer::swallow; };
    bool enabled = true;

    InterceptDecision ask(const KeyEventFields& event) override;
    bool tell(const KeyEventFields& event) override;
    bool isEnabled() const override { return enabled; }

    /// Whether it waits for the release of a press that it was asked about.
    bool awaitsRelease() const { return !pressed_.empty(); }

private:
    void write(const char* what, const KeyEventFields& event);

    FakeX11Keyboard& keyboard_;
    std::set<std::int64_t> pressed_;
};

}  // namespace quillmere::support
