#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// One layout of the keyboard as its server names it: "us", or "us" with the
/// variant "dvorak".
struct XkbLayout {
    std::string layout;
    std::string variant;  ///< empty for the layout itself

    /// "xkb:us", "xkb:us+dvorak": the same for this layout on every desktop.
    std::string id() const;

    friend auto operator<=>(const XkbLayout&, const XkbLayout&) = default;
};

/// What the system's list of layouts says of one.
struct XkbLayoutDescription {
    std::string name;                    ///< UTF-8
    std::vector<std::string> languages;  ///< ISO 639 codes of three letters, the main one first
};

/// A layout and what the list says of it.
struct XkbListedLayout {
    XkbLayout layout;
    XkbLayoutDescription description;
};

/// One layout as a desktop shows it that tells no variant.
struct XkbLabel {
    std::string layout;  ///< "us"; empty where the desktop does not tell
    std::string text;    ///< the name, in English or in the user's language

    friend auto operator<=>(const XkbLabel&, const XkbLabel&) = default;
};

/// Names and languages of layouts, from the system's list (libxkbregistry).
/// Reading the list takes about 5 ms and a further 3 ms for its rare part, so
/// it is read when a layout is asked for the first time, the rare part only
/// for a layout that is not in the main one, and only what was asked for is
/// kept. One thread.
class XkbLayoutRegistry {
public:
    /// Describes each layout; absent for a layout that the list does not have.
    /// `rules` is the name of the list ("evdev"; empty for the default).
    std::vector<std::optional<XkbLayoutDescription>> describe(const std::string& rules,
                                                              const std::vector<XkbLayout>& layouts);

    /// The layout of the default list that a keymap means by each of these
    /// names; absent for a name that no layout has. No two layouts of the main
    /// part share a name.
    std::vector<std::optional<XkbListedLayout>> named(const std::vector<std::string>& names);

    /// The layout of the default list that a desktop means by each of these
    /// labels; absent for a label that fits none.
    std::vector<std::optional<XkbListedLayout>> labelled(const std::vector<XkbLabel>& labels);

private:
    enum class Part { main, withRare };
    using Visitor = std::function<void(const XkbListedLayout&)>;

    static void read(const std::string& rules, Part part, const Visitor& visit);
    void learn(const std::vector<XkbLayout>& layouts, Part part);
    void learn(const std::vector<std::string>& names, Part part);
    void learn(const std::vector<XkbLabel>& labels, Part part);
    template <typename Known, typename Keys>
    std::vector<typename Known::mapped_type> lookUp(Known& known, const Keys& keys);

    std::string rules_;
    std::map<XkbLayout, std::optional<XkbLayoutDescription>> known_;
    std::map<std::string, std::optional<XkbListedLayout>> knownNames_;
    std::map<XkbLabel, std::optional<XkbListedLayout>> knownLabels_;
};

}  // namespace quillmere
