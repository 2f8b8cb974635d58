#pragma once

#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QVariant>

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::fcitxMethods {

/// What fcitx tells of one input method.
struct Description {
    std::string name;      ///< "Hangul", in the user's language
    std::string language;  ///< ISO 639; empty where it tells none
};

/// One group of input methods, as the user has arranged it.
struct Group {
    std::string layout;                ///< the keyboard's under all of them: "us", "us-dvorak"
    std::vector<std::string> methods;  ///< in their order: "keyboard-us", "hangul"

    friend bool operator==(const Group&, const Group&) = default;
};

/// Whether fcitx means a plain keyboard by this name.
bool isKeyboard(const std::string& method);

/// The layout of a plain keyboard: "us" with the variant "dvorak" of
/// "keyboard-us-dvorak".
XkbLayout layoutOf(const std::string& keyboard);

/// The name of the plain keyboard with this layout.
std::string keyboardWith(const std::string& layout);

/// The program's identifier of a method: "xkb:us+dvorak" of
/// "keyboard-us-dvorak", else "fcitx:hangul" of "hangul".
std::string idOf(const std::string& method);

/// Reads the answer to InputMethodGroupInfo: a layout, and an array of two texts
/// each (name, layout of its own); absent when it is something else.
std::optional<Group> group(const QVariantList& answer);

/// Reads the answer to AvailableInputMethods, an array of six texts and a truth
/// value each; plain keyboards are left out. Empty when it is something else.
std::map<std::string, Description> descriptions(const QVariant& answer);

}  // namespace quillmere::fcitxMethods
