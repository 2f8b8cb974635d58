#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11KeyEngine.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardPort.h"

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace quillmere::support {

/// The keyboard of an X server as it plays its part towards a client with
/// synchronous grabs, seen from three sides: the fingers, the engine, and all
/// other clients, who are one here. It notes what the server or another client
/// would suffer from.
class FakeX11Keyboard : public X11KeyboardPort {
public:
    /// What the server sends to us.
    struct Message {
        enum class Kind { rawPress, rawRelease, grabbedPress, grabbedRelease, newModifiers, newKeymap };
        Kind kind;
        X11GrabbedKey key;
    };

    std::deque<Message> inbox;
    /// What the other clients saw, as "+ctrl ~a -ctrl"; a release of what they
    /// have not seen pressed as "stray-a".
    std::string seen;
    /// Breaches of what may ever happen, in words.
    std::vector<std::string> faults;
    /// Server's milliseconds.
    unsigned long time = 1000;
    /// Combinations that another client has.
    std::set<X11KeyCombination> theirs;
    /// Whether the server gives a press that both have grabbed to the others.
    bool theirsWin = true;

    FakeX11Keyboard();

    // The fingers; a repeat is the server's own, of the key pressed last.
    bool canRepeat(unsigned int keyCode) const { return held_[keyCode] && keyCode == lastPressed_; }
    void press(unsigned int keyCode) { move(keyCode, true, false); }
    void release(unsigned int keyCode) { move(keyCode, false, false); }
    void repeat(unsigned int keyCode) { move(keyCode, true, true); }

    // Another client takes the whole keyboard; false when we have it.
    bool openMenu();
    void closeMenu() { isMenuOpen_ = false; }
    /// The others may see the releases of what is held now, whatever was its press.
    void excuseHeldKeys() { excused_ |= held_; }
    /// Another map: Alt and Super change real modifiers.
    void swapAltAndSuper();

    /// What the program decided about the press of this time.
    void noteVerdict(unsigned long pressTime, InterceptDecision verdict);

    /// Under the fingers.
    const X11Keys& held() const { return held_; }
    const std::set<X11KeyCombination>& ours() const { return ours_; }
    bool isStandingStill() const { return freeze_ != Freeze::none; }
    bool isOursActive() const { return grab_ != Grab::none; }
    bool isListening() const { return isListening_; }
    bool isListeningToKeys() const { return isListeningToKeys_; }
    bool isPressSeen(unsigned int keyCode) const { return seenDown_[keyCode]; }

    // X11KeyboardPort
    void listen(bool on) override;
    void listenToKeys(bool on) override;
    X11Keymap readKeymap() override { return X11Keymap(map_); }
    std::optional<unsigned int> readModifiers() override { return modifiers(); }
    X11Keys readKeysDown() override { return down_; }
    Combinations grab(const Combinations& combinations) override;
    void ungrab(const Combinations& combinations) override;
    bool grabKeyboard(unsigned long since) override;
    void ungrabKeyboard() override;
    void keep() override;
    void replay() override;
    void tapFiller(unsigned int keyCode, int device) override;
    void flush() override {}

    static unsigned int code(const std::string& name);
    static std::string name(unsigned int keyCode);
    /// "ctrl+space", under the first map.
    static X11KeyCombination combination(const std::string& text);
    static bool isFlagKey(unsigned int keyCode);
    /// All keys that it knows.
    static const std::vector<unsigned int>& codes();

    static constexpr unsigned int filler = 248;
    static constexpr int device = 7;

private:
    struct Movement {
        unsigned int keyCode;
        bool isPress;
        bool isRepeat;
        unsigned long time;
        bool isLate;  ///< the engine could not know what came before it
    };
    enum class Grab { none, key, keyboard };
    enum class Freeze { none, atEvent, withoutEvent };

    void move(unsigned int keyCode, bool isPress, bool isRepeat);
    void play();
    void process(const Movement& movement);
    void deliver(const Movement& movement, unsigned int before);
    void deliverToUs(const Movement& movement, unsigned int before);
    void activate(const Movement& movement);
    void show(const Movement& movement);
    void showRelease(const Movement& movement);
    bool isExcused(const Movement& movement) const;
    void missRelease();
    void endGrab();
    void send(Message::Kind kind, const Movement& movement, unsigned int before);
    unsigned int modifiers() const;
    unsigned int modifierOf(unsigned int keyCode) const;
    void fault(const std::string& text) { faults.push_back(text); }

    X11Keymap::Map map_;
    X11Keys held_;
    unsigned int lastPressed_ = 0;
    X11Keys down_;  ///< as far as the server has processed
    X11Keys excused_;
    X11Keys seenDown_;  ///< what the other clients believe to be down
    unsigned int locked_ = 0;
    bool isListening_ = false;
    bool isListeningToKeys_ = false;
    bool isMenuOpen_ = false;
    unsigned int theirGrabbingKey_ = 0;
    std::set<X11KeyCombination> ours_;
    Grab grab_ = Grab::none;
    unsigned int grabbingKey_ = 0;
    unsigned long grabTime_ = 0;
    Freeze freeze_ = Freeze::none;
    Movement frozenAt_{};
    std::deque<Movement> waiting_;
    int lostEvents_ = 0;  ///< sent to us, and dropped by the server before our answer
    std::map<unsigned long, InterceptDecision> verdicts_;
};

}  // namespace quillmere::support
