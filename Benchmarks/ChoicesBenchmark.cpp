// Measures the programs between which a person on X11 chooses to switch layouts
// by a shortcut, each on a desktop of its own, all taken in turns: the time until
// another program knows of the other layout, and letters that are typed right
// after the shortcut. Prints rows of a Markdown table.
//
//   choices_benchmark <quillmere> <next_layout>

#include "Benchmarks/Choice.h"
#include "Benchmarks/FcitxField.h"
#include "Benchmarks/Run.h"
#include "Benchmarks/Table.h"
#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/Ibus.h"
#include "Tests/Support/Program.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace quillmere::bench {
namespace {

namespace keys = support::keys;
using Choices = std::vector<std::unique_ptr<Choice>>;
using support::ChildProcess;

constexpr int switchSamples = 200;
constexpr int bursts = 100;

class QuillmereChoice : public Choice {
public:
    explicit QuillmereChoice(const std::filesystem::path& program) : Choice("Quillmere", keys::leftSuper) {
        desktop().settings().set("config",
                                 support::configurationText({{.modifiers = 1, .sources = {"xkb:us", "xkb:ua"}}}));
        program_.emplace(program, desktop());
        if (!program_->waitForTrayItem()) throw std::runtime_error("the program does not start");
        listen();
        waitUntilReady();
    }

private:
    std::optional<support::Program> program_;
};

/// sxhkd, which runs a command for a shortcut.
class HotkeyDaemonChoice : public Choice {
public:
    explicit HotkeyDaemonChoice(const std::string& command)
        : Choice("sxhkd, which runs a program that switches", keys::leftSuper) {
        const std::filesystem::path file = desktop().folder() / "sxhkdrc";
        std::ofstream(file) << "super + space\n    " << command << '\n';
        support::Environment environment = desktop().environment();
        environment["SHELL"] = "/bin/sh";
        daemon_.emplace(ChildProcess::Options{.arguments = {"sxhkd", "-c", file},
                                              .environment = environment,
                                              .output = desktop().folder() / "sxhkd.log"});
        listen();
        waitUntilReady();
    }

private:
    std::optional<ChildProcess> daemon_;
};

/// fcitx, with its own shortcut and two layouts as its methods. To it a layout
/// is a method like others and the X server's stays: what the other one types it
/// gives the programs as text. So whoever types into a program is the one to see
/// a switch: the program is told of it.
class FcitxChoice : public Choice {
public:
    FcitxChoice()
        : Choice("fcitx's own Ctrl+Space", keys::leftControl, "us"),
          bus_(desktop().bus().connect()),
          fcitx_(desktop().folder(), desktop().environment(), bus_, {"keyboard-us", "keyboard-ua"}),
          field_(bus_, fcitx_.openField()) {
        listen([this](const WindowKey& key) { field_.pass(key); });
        waitUntilReady();
    }
    ~FcitxChoice() override { stopListening(); }

protected:
    Moment& change() override { return field_.methodChange(); }
    const char* textMethod() const override { return "fcitx"; }

private:
    QDBusConnection bus_;
    support::Fcitx fcitx_;
    FcitxField field_;
};

/// IBus, with its own shortcut and two layouts as its engines, each of which it
/// makes the X server's one layout. Its window of engines does not come: with it
/// IBus switches when the modifier is let go.
class IbusChoice : public Choice {
public:
    IbusChoice()
        : Choice("IBus's own Super+Space", keys::leftSuper, "us"),
          ibus_(desktop().folder(), desktop().environment(), desktop().bus().connect(), {"xkb:us::eng", "xkb:ua::ukr"},
                support::Ibus::Panel::shown) {
        ibus_.setLeavesLayouts(false);
        ibus_.setDelayOfWindow(-1);
        listen();
        waitUntilReady();
    }

protected:
    const char* textMethod() const override { return "ibus"; }

private:
    support::Ibus ibus_;
};

void measureTimes(const Choices& choices) {
    std::vector<Sample> samples;
    for (const auto& choice : choices)
        samples.push_back([&choice] { return choice->timeSwitch(); });
    takeInTurns("the first switches", 10, samples);
    const auto times = takeInTurns("a switch", switchSamples, samples);
    for (std::size_t i = 1; i < choices.size(); ++i)
        rows("key press → new layout seen by another program, against " + choices[i]->name(), times[0], times[i],
             {.median = "≤ 1.2 ×", .tail = "≤ 1.2 ×"});
}

std::string letters(const Choice& choice) {
    const std::string wrong = std::to_string(choice.wrongLetters());
    return choice.lostLetters() == 0 ? wrong : wrong + ", " + std::to_string(choice.lostLetters()) + " lost";
}

void measureLetters(const Choices& choices) {
    for (const auto& choice : choices)
        choice->openTextField();
    for (int burst = 0; burst < bursts; ++burst)
        for (const auto& choice : choices)
            choice->typeBurst();
    for (std::size_t i = 1; i < choices.size(); ++i)
        row("letters in the wrong layout, of " + std::to_string(bursts) + " typed right after the shortcut, against "
                + choices[i]->name(),
            letters(*choices[0]), letters(*choices[i]), "–", "0");
}

Choices start(const char* quillmere, const char* nextLayout) {
    Choices choices;
    choices.push_back(std::make_unique<QuillmereChoice>(quillmere));
    choices.push_back(std::make_unique<HotkeyDaemonChoice>(nextLayout));
    choices.push_back(std::make_unique<FcitxChoice>());
    choices.push_back(std::make_unique<IbusChoice>());
    return choices;
}

/// With a new start for each: after some two hundred switches of IBus's own no
/// text field comes to be typed into beside it.
void measure(const char* quillmere, const char* nextLayout) {
    measureTimes(start(quillmere, nextLayout));
    measureLetters(start(quillmere, nextLayout));
}

}  // namespace
}  // namespace quillmere::bench

int main(int argc, char** argv) {
    return quillmere::bench::run(argc, argv, {"quillmere", "next_layout"},
                                 [argv] { quillmere::bench::measure(argv[1], argv[2]); });
}
