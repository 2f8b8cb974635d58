#include "Quillmere/Platform/Linux/Doctor/ShortcutHolders.h"

#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandKeyBinds.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeGlobalShortcuts.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeKeyNames.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayKeyBindings.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11GrabProbe.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyMatcher.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeymapReader.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

namespace {

constexpr const char* choose = "Choose another shortcut, or take this one from the program that has it.";

/// A row with a line for each shortcut. A lone tap of Fn is nobody's: nobody
/// else knows the gesture.
Finding holders(const std::vector<Shortcut>& shortcuts, const std::function<std::string(const Shortcut&)>& holderOf) {
    Finding row{.subject = "Shortcuts", .state = {}, .advice = {}};
    for (const Shortcut& shortcut : shortcuts) {
        if (!row.state.empty()) row.state += '\n';
        row.state += shortcut.displayString() + ": ";
        row.state += shortcut.isFnAlone() ? "tapped alone, nobody else's" : holderOf(shortcut);
    }
    if (shortcuts.empty()) row = {"Shortcuts", "none", "Give a group a shortcut, in Quillmere's settings."};
    return row;
}

bool isFree(const Shortcut& shortcut, const X11Keymap& keymap) {
    X11KeyMatcher matcher;
    matcher.setKeymap(keymap);
    matcher.setInterest({.shortcuts = {shortcut}});
    const std::vector<X11KeyCombination> combinations = matcher.combinations();
    return freeCombinations(combinations).size() == combinations.size();
}

struct Words {
    const char* taken;
    const char* free;
    const char* advice;
};

/// Where a compositor tells what the user's configuration of it binds.
Finding configuredHolders(const std::vector<Shortcut>& shortcuts, std::optional<ReservedKeys> reserved,
                          InputSourceService& sources, const Words& words) {
    if (!reserved) return untoldHolders(shortcuts);
    std::vector<std::string> layouts;
    for (const InputSourceRecord& record : sources.sources())
        layouts.push_back(record.id.value_or(std::string()));
    bool isAnyTaken = false;
    Finding row = holders(shortcuts, [&](const Shortcut& shortcut) {
        const bool isTaken = reserved->has(shortcut, layouts);
        isAnyTaken = isAnyTaken || isTaken;
        return isTaken ? words.taken : words.free;
    });
    if (isAnyTaken) row.advice = words.advice;
    return row;
}

}  // namespace

Finding x11Holders(const std::vector<Shortcut>& shortcuts) {
    const std::unique_ptr<X11Connection> connection = X11Connection::open();
    if (!connection) return untoldHolders(shortcuts);
    const X11Keymap keymap = readX11Keymap(connection->display());
    bool isAnyTaken = false;
    Finding row = holders(shortcuts, [&](const Shortcut& shortcut) {
        if (isFree(shortcut, keymap)) return "no other program's";
        isAnyTaken = true;
        return "another program's";
    });
    if (isAnyTaken) row.advice = choose;
    return row;
}

Finding kdeHolders(const std::vector<Shortcut>& shortcuts, const QDBusConnection& bus, InputSourceService& sources) {
    std::vector<std::string> layouts;
    for (const InputSourceRecord& record : sources.sources())
        layouts.push_back(record.id.value_or(std::string()));
    const KdeKeyNames names(layouts);
    const std::optional<std::string> current = sources.currentID();
    bool isAnyTaken = false;
    Finding row = holders(shortcuts, [&](const Shortcut& shortcut) -> std::string {
        for (const int key : names.names(shortcut, current)) {
            const std::optional<QString> holder = KdeGlobalShortcuts::holder(bus, key);
            if (!holder) return "the desktop does not say";
            if (holder->isEmpty()) continue;
            isAnyTaken = isAnyTaken || *holder != QStringLiteral("Quillmere");
            return holder->toStdString();
        }
        return "free";
    });
    if (isAnyTaken) row.advice = choose;
    return row;
}

Finding swayHolders(const std::vector<Shortcut>& shortcuts, const std::string& socket, InputSourceService& sources) {
    return configuredHolders(shortcuts, SwayKeyBindings::reservedAt(socket), sources,
                             {.taken = "sway's own, by its configuration",
                              .free = "not in sway's configuration",
                              .advice = "Choose another shortcut, or take this one out of sway's configuration."});
}

Finding hyprlandHolders(const std::vector<Shortcut>& shortcuts, const std::string& folder,
                        InputSourceService& sources) {
    return configuredHolders(shortcuts, HyprlandKeyBinds::reservedAt(folder), sources,
                             {.taken = "a bind of your own in Hyprland",
                              .free = "none of your own binds in Hyprland",
                              .advice = "Choose another shortcut, or take this one out of Hyprland's configuration."});
}

Finding untoldHolders(const std::vector<Shortcut>& shortcuts) {
    return holders(shortcuts, [](const Shortcut&) { return "this desktop does not tell who has it"; });
}

}  // namespace quillmere
