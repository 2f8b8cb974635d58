#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBind.h"

#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBindList.h"
#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"
#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"

#include <array>
#include <utility>

namespace quillmere {

namespace {

/// "CTRL + ALT", with this between the words.
std::string modifierWords(unsigned int modifiers, const std::string& between) {
    constexpr std::array<std::pair<unsigned int, const char*>, 4> words{{{modifierBits::control, "CTRL"},
                                                                         {modifierBits::mod1, "ALT"},
                                                                         {modifierBits::shift, "SHIFT"},
                                                                         {modifierBits::mod4, "SUPER"}}};
    std::string text;
    for (const auto& [bit, word] : words)
        if ((modifiers & bit) != 0) text += (text.empty() ? "" : between) + word;
    return text;
}

std::string keysInKeyword(const HyprlandBind& bind) {
    return modifierWords(bind.modifiers, " ") + ",code:" + std::to_string(bind.keyCode);
}

/// Also the name in the program's variable.
std::string keysInLua(const HyprlandBind& bind) {
    return '"' + modifierWords(bind.modifiers, " + ") + " + code:" + std::to_string(bind.keyCode) + '"';
}

}  // namespace

QByteArray HyprlandBind::event() const {
    return HyprlandBindList::eventPrefix + QByteArray::number(keyCode) + ' ' + QByteArray::number(modifiers);
}

std::string HyprlandBind::keyword() const {
    return "keyword bind " + keysInKeyword(*this) + ",event," + event().toStdString();
}

std::string HyprlandBind::unbindKeyword() const {
    return "keyword unbind " + keysInKeyword(*this);
}

std::string HyprlandBind::lua() const {
    const std::string keys = keysInLua(*this);
    // A reload may have come between: Lua would bind first, and only then miss the
    // variable, and nobody could take that bind back.
    return "eval quillmere = quillmere or {} quillmere[" + keys + "] = hl.bind(" + keys + ", hl.dsp.event(\""
           + event().toStdString() + "\"), { description = \"" + HyprlandBindList::description + "\" })";
}

std::string HyprlandBind::unbindLua() const {
    const std::string keys = keysInLua(*this);
    return "eval quillmere[" + keys + "]:remove() quillmere[" + keys + "] = nil";
}

std::vector<HyprlandBind> hyprlandBinds(const Shortcut& shortcut) {
    std::vector<HyprlandBind> binds;
    // A bind without modifiers would take the key from all typing.
    if (shortcut.modifiers.isEmpty()) return binds;
    for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(shortcut.keyCode))
        binds.push_back({.keyCode = code + KeyCodes::x11Offset,
                         .modifiers = modifierBits::of(shortcut.modifiers),
                         .shortcut = shortcut});
    return binds;
}

}  // namespace quillmere
