#pragma once

#include <QByteArray>

#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace quillmere::support {

/// A stand-in for Hyprland, which does not run without a graphics card: both its
/// sockets, in a thread of its own, with what older and newer versions answer and
/// what they do with keyboards and binds; and whatever a test tells it to say.
class FakeHyprland {
public:
    enum class Version {
        hyprlang,  ///< as 0.49: "keyword bind", and layouts in use told by their names
        lua,       ///< as 0.57: "eval hl.bind(…)"
    };

    struct Layout {
        std::string layout;
        std::string variant;
        std::string name;  ///< as a keymap names it
    };

    /// A bind of the user's own, which their configuration makes.
    struct OwnBind {
        unsigned int modifiers = 0;
        std::string key;           ///< by what it types, as the configuration names it
        unsigned int keyCode = 0;  ///< by X11's numbers; 0 for one by `key`
        std::string submap;
    };

    /// Listens in this folder, with two keyboards that have the layouts us, ua
    /// and German Dvorak.
    FakeHyprland(const std::filesystem::path& folder, Version version);
    ~FakeHyprland();
    FakeHyprland(const FakeHyprland&) = delete;
    FakeHyprland& operator=(const FakeHyprland&) = delete;

    static std::vector<Layout> usualLayouts();
    static constexpr const char* board = "at-translated-set-2-keyboard";
    static constexpr const char* button = "power-button";

    // The keyboards

    /// A new one, in its first layout, which becomes the main one.
    void plugIn(const std::string& name, const std::vector<Layout>& layouts);
    void unplug(const std::string& name);
    /// As an option of the keyboard's own switches it.
    void switchKeyboard(const std::string& name, std::size_t layout);
    /// By keyboards, in the order of their coming.
    std::vector<std::size_t> layoutsInUse();

    // The binds

    void setOwnBinds(const std::vector<OwnBind>& binds);
    /// A key goes down with these modifiers and up again: whether it was bound,
    /// by anybody, or an application has got it.
    bool press(unsigned int modifiers, unsigned int keyCode);
    /// Drops the binds that are not the configuration's, and says so.
    void reload();
    /// The same before it is said.
    void reloadUntold();
    /// How many there are that are not the configuration's.
    std::size_t bindCount();

    // What goes wrong

    /// Old versions know no "all" keyboards.
    void forgetAll();
    /// It does nothing and answers nothing until it is silent no more.
    void setSilent(bool isSilent);
    /// What it answers to requests that begin so, in place of its own; it closes
    /// the connection after that.
    void setAnswer(const std::string& request, const std::string& bytes);
    void clearAnswers();
    /// Sent to whoever listens to events.
    void announce(const std::string& bytes);
    /// Closes the connections of those who listen to events.
    void hangUp();

    /// The requests that came so far.
    std::vector<std::string> requests();

private:
    struct Keyboard {
        std::string name;
        int address = 0;
        std::vector<Layout> layouts;
        std::size_t active = 0;
    };
    struct Bind {
        std::string keys;  ///< as it was written
        unsigned int modifiers = 0;
        unsigned int keyCode = 0;
        std::string event;
        std::string description;
    };

    void run();
    void acceptRequest();
    void acceptListener();
    void serve(int client, const std::string& request);
    std::string answer(const std::string& request);
    std::string devices() const;
    std::string binds() const;
    std::string switchLayout(const std::string& keyboard, const std::string& index);
    std::string keyword(const std::string& text);
    std::string eval(const std::string& code);
    void put(Keyboard& keyboard, std::size_t layout);
    void tell(const std::string& bytes);

    std::filesystem::path folder_;
    Version version_;
    int requestListener_;
    int eventListener_;
    int wake_[2];
    std::mutex mutex_;
    std::vector<Keyboard> keyboards_;
    std::vector<Bind> binds_;
    std::vector<OwnBind> ownBinds_;
    bool hasTable_ = false;  ///< the program's own, among the variables of Lua
    bool knowsAll_ = true;
    bool isSilent_ = false;
    int addresses_ = 0;
    std::vector<std::pair<int, std::string>> heldBack_;
    std::map<std::string, std::string> answers_;
    std::vector<int> listeners_;
    std::vector<std::string> requests_;
    std::thread thread_;
};

}  // namespace quillmere::support
