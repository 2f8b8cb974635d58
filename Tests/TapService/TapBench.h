#pragma once

#include "TapService/TapEngine.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace quillmere::tap {

/// Keyboards as the kernel plays them, seen from all three sides: the fingers,
/// the service, and everybody else.
class FakeKeyboards : public KeyboardPort {
public:
    struct Keyboard {
        KeySet keys;
        KeySet down;       ///< under the fingers
        KeySet worldDown;  ///< what everybody else believes to be down on the device itself
        KeySet cloneDown;  ///< the same on the clone
        std::deque<InputEvent> unread;
        bool isOpen = false;
        bool isHeardInFull = true;
        int heard = 0;  ///< events that woke the service
        bool isGrabbed = false;
        bool hasClone = false;
        bool isForgotten = false;
        int openCalls = 0;
    };

    std::map<DeviceId, Keyboard> keyboards;
    /// How a new clone comes up.
    CloneState newClone = CloneState::ready;
    bool canOpen = true;
    bool grabIsFree = true;
    Time now{std::chrono::seconds(100)};
    /// What went out through the clones, as "+ctrl -ctrl".
    std::string output;
    /// The events behind it, reports included.
    std::vector<InputEvent> forwarded;
    /// Breaches of what a keyboard may ever do, in words.
    std::vector<std::string> faults;

    std::optional<KeySet> open(DeviceId device) override;
    void close(DeviceId device) override;
    void hearFnOnly(DeviceId device) override;
    KeySet hearAll(DeviceId device) override;
    CloneState prepareClone(DeviceId device) override;
    std::optional<Time> grab(DeviceId device) override;
    std::optional<Time> ungrab(DeviceId device, bool force) override;
    void forward(DeviceId device, const InputEvent& event) override;
    void forget(DeviceId device) override;

    /// The fingers: `value` 1 presses, 0 releases, 2 is the device's own repeat.
    void move(DeviceId device, std::uint16_t code, std::int32_t value);
    void move(DeviceId device, std::uint16_t type, std::uint16_t code, std::int32_t value);

private:
    void fault(const std::string& text) { faults.push_back(text); }
};

/// An owner that writes down what it is told, as "ask:ctrl+space other".
class FakeOwner : public OwnerPort {
public:
    std::string log;
    std::vector<KeyEvent> events;
    bool reads = true;
    std::uint32_t lastQuestion = 0;

    bool tell(const KeyEvent& event) override;
    void tellDisabled(DisabledReason reason) override;

private:
    void write(const std::string& word);
};

/// The engine between fake keyboards and a fake owner, moved by a line of
/// words:
///
/// | word            | means                                                     |
/// |-----------------|-----------------------------------------------------------|
/// | +a -a ~a        | the key a is pressed, released, repeated                  |
/// | 2+a             | the same on the second keyboard                           |
/// | swallow, pass   | the owner's verdict on the last question                  |
/// | late            | half a second goes by                                     |
/// | enable          | the owner turns the tap on again                          |
/// | record, stop    | the owner begins and ends a recording                     |
/// | leave           | the owner goes                                            |
/// | reopen          | it opens the tap again                                    |
/// | unplug          | the first keyboard is pulled out                          |
/// | wheel           | it turns a wheel                                          |
class TapBench {
public:
    TapBench();

    FakeKeyboards keyboards;
    FakeOwner owner;
    TapEngine engine;
    Interest interest;

    static constexpr DeviceId first = 1;
    static constexpr DeviceId second = 2;

    /// Plugs in a keyboard that has every key, or only these.
    void plug(DeviceId device = first);
    void plug(DeviceId device, const std::vector<std::string>& keys);
    /// Gives the tap to the owner; shortcuts as "ctrl+space", and "fn".
    void own(const std::vector<std::string>& wishes);
    void play(const std::string& words);
    /// Hands what the keyboards sent to the engine.
    void deliver();
    void advance(Time time);
    /// Does what the engine wants done at once.
    void turn();
    bool isGrabbed(DeviceId device = first) { return keyboard(device).isGrabbed; }

    FakeKeyboards::Keyboard& keyboard(DeviceId device = first) { return keyboards.keyboards.at(device); }

    static std::uint16_t code(const std::string& name);
    static std::string name(std::uint16_t code);

private:
    void playWord(const std::string& word);
};

}  // namespace quillmere::tap
