#pragma once

#include "Tests/X11Tap/FakeVerdicts.h"
#include "Tests/X11Tap/FakeX11Keyboard.h"

#include <deque>
#include <string>
#include <vector>

namespace quillmere::support {

/// The engine between a played server and a played program, moved by a line of
/// words:
///
/// | word                | means                                                 |
/// |---------------------|-------------------------------------------------------|
/// | +a -a ~a            | the key a is pressed, released, repeated by the server |
/// | ( ... )             | all of this happens before we read of any of it       |
/// | swallow, pass, late | the verdict on the press before; one for each asked   |
/// | done                | swallow, and the recording ends before we read on     |
/// | enable              | the program takes verdicts again after a late one     |
/// | want:ctrl+space     | this shortcut is of interest as well                  |
/// | forget              | no shortcut is of interest any more                   |
/// | record, stop        | a recording begins and ends                           |
/// | menu, close         | another client takes the whole keyboard, gives it back |
/// | theirs:ctrl+space   | another client has taken this combination             |
/// | free:ctrl+space     | it has given it back                                  |
/// | swap                | the map changes: Alt and Super change real modifiers  |
/// | wait                | a tenth of a second goes by                           |
/// | away, back          | everything is given back; everything is taken again   |
///
/// However a line ends: once every key is up, nothing stands still, nothing is
/// grabbed that is not wanted, nobody misses a release, and the server was
/// never asked for what makes no sense.
class X11TapBench {
public:
    /// Shortcuts as "ctrl+space", and "fn".
    explicit X11TapBench(const std::vector<std::string>& wishes = {});
    ~X11TapBench();
    X11TapBench(const X11TapBench&) = delete;
    X11TapBench& operator=(const X11TapBench&) = delete;

    FakeX11Keyboard keyboard;
    FakeVerdicts verdicts{keyboard};
    X11KeyEngine engine{keyboard, verdicts};
    KeyInterest interest;
    X11KeyEngine::TimePoint now{std::chrono::hours(1)};

    void play(const std::string& words);

    /// Hands the engine what the server has sent.
    void deliver();
    /// Time goes by.
    void advance(std::chrono::milliseconds time);
    /// Orders come when all is read, as with the real tap.
    void setInterest();
    void enable();
    /// As the process does before it stops, and when it goes on.
    void giveBack();
    void takeAgain();

    /// What must hold whenever all is delivered and all keys are up; the
    /// breaches, in words.
    std::vector<std::string> finish();

    static Shortcut shortcut(const std::string& text);

private:
    bool playMovement(const std::string& word);
    bool playWish(const std::string& word);
    bool playOther(const std::string& word);
    bool playClient(const std::string& word);
    void dispatch(const FakeX11Keyboard::Message& message);

    bool isFinished_ = false;
    bool isAway_ = false;
    bool isDone_ = false;  ///< the program ended the recording as it answered
    std::deque<std::string> answers_;
};

}  // namespace quillmere::support
