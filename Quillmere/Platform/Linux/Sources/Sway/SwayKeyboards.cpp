#include "Quillmere/Platform/Linux/Sources/Sway/SwayKeyboards.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <array>
#include <cctype>
#include <map>
#include <string_view>

namespace quillmere {

namespace {

// By the name that the compositor's library gives them, older and newer.
constexpr std::array<std::string_view, 3> virtualIdentifiers{"0:0:virtual_keyboard", "0:0:virtual-keyboard",
                                                             "0:0:wlr_virtual_keyboard_v1"};

/// The names of the layouts; none at all when one has no name.
std::vector<std::string> namesIn(const QJsonValue& value) {
    std::vector<std::string> names;
    for (const auto& name : value.toArray()) {
        if (!name.isString()) return {};
        names.push_back(name.toString().toStdString());
    }
    return names;
}

/// A device names itself, so it could break out of the quotes and have the
/// compositor run what it likes.
bool isSafe(const std::string& identifier) {
    constexpr std::string_view marks = ":_-.()/+";
    return std::ranges::all_of(identifier, [&](char letter) {
        return std::isalnum(static_cast<unsigned char>(letter)) != 0 || marks.contains(letter);
    });
}

std::string switchCommand(const std::string& criterion, std::size_t index) {
    return "input " + criterion + " xkb_switch_layout " + std::to_string(index) + ";";
}

}  // namespace

std::optional<std::size_t> SwayKeyboards::Keyboard::indexOf(const std::string& layout) const {
    const auto found = std::ranges::find(layouts, layout);
    if (found == layouts.end()) return std::nullopt;
    return static_cast<std::size_t>(found - layouts.begin());
}

std::optional<SwayKeyboards> SwayKeyboards::parse(const QByteArray& reply) {
    const QJsonDocument document = QJsonDocument::fromJson(reply);
    if (!document.isArray()) return std::nullopt;
    SwayKeyboards result;
    for (const auto& entry : document.array()) {
        const QJsonObject input = entry.toObject();
        if (input["type"].toString() != QLatin1String("keyboard")) continue;
        Keyboard keyboard{.identifier = input["identifier"].toString().toStdString(),
                          .layouts = namesIn(input["xkb_layout_names"]),
                          .active = static_cast<std::size_t>(input["xkb_active_layout_index"].toInt())};
        keyboard.isVirtual = std::ranges::find(virtualIdentifiers, keyboard.identifier) != virtualIdentifiers.end();
        if (keyboard.active < keyboard.layouts.size()) result.keyboards_.push_back(std::move(keyboard));
    }
    result.chooseMain();
    return result;
}

void SwayKeyboards::chooseMain() {
    isMainVirtual_ = std::ranges::all_of(keyboards_, &Keyboard::isVirtual);
    for (const Keyboard& keyboard : keyboards_)
        if (counts(keyboard) && keyboard.layouts.size() >= layouts_.size()) layouts_ = keyboard.layouts;
}

std::optional<std::string> SwayKeyboards::current(const std::optional<std::string>& last) const {
    const Keyboard* chosen = nullptr;
    for (const Keyboard& keyboard : keyboards_) {
        if (!isPeer(keyboard)) continue;
        if (layouts_[keyboard.active] == last) return last;
        if (chosen == nullptr || (chosen->active == 0 && keyboard.active != 0)) chosen = &keyboard;
    }
    if (chosen == nullptr) return std::nullopt;
    return layouts_[chosen->active];
}

bool SwayKeyboards::isPeer(const std::string& identifier) const {
    return std::ranges::any_of(
        keyboards_, [&](const Keyboard& keyboard) { return keyboard.identifier == identifier && isPeer(keyboard); });
}

bool SwayKeyboards::isInUse(const std::string& layout) const {
    return std::ranges::find(layouts_, layout) != layouts_.end()
           && std::ranges::all_of(keyboards_, [&](const Keyboard& keyboard) {
                  return !isPeer(keyboard) || layouts_[keyboard.active] == layout;
              });
}

std::string SwayKeyboards::command(const std::string& layout) const {
    if (std::ranges::find(layouts_, layout) == layouts_.end()) return {};
    std::set<std::string> identifiers;
    bool isUniform = true;
    for (const Keyboard& keyboard : keyboards_) {
        isUniform = isUniform && keyboard.layouts == layouts_;
        identifiers.insert(keyboard.identifier);
    }
    // Reaches even a keyboard that is plugged in at this moment.
    const auto index = static_cast<std::size_t>(std::ranges::find(layouts_, layout) - layouts_.begin());
    if (isUniform) return switchCommand("type:keyboard", index);
    return command(layout, identifiers);
}

std::string SwayKeyboards::command(const std::string& layout, const std::set<std::string>& identifiers) const {
    std::string text;
    std::set<std::string> done;
    for (const Keyboard& keyboard : keyboards_) {
        const std::optional<std::size_t> index = keyboard.indexOf(layout);
        const bool isWanted = counts(keyboard) && identifiers.contains(keyboard.identifier);
        if (!index || !isWanted || !isSafe(keyboard.identifier)) continue;
        // Twins are reached together.
        if (done.insert(keyboard.identifier).second) text += switchCommand('"' + keyboard.identifier + '"', *index);
    }
    return text;
}

std::set<std::string> SwayKeyboards::newcomers(const SwayKeyboards& before) const {
    std::map<std::string, int> surplus;
    for (const Keyboard& keyboard : keyboards_)
        ++surplus[keyboard.identifier];
    for (const Keyboard& keyboard : before.keyboards_)
        --surplus[keyboard.identifier];
    std::set<std::string> identifiers;
    for (const auto& [identifier, count] : surplus)
        if (count > 0) identifiers.insert(identifier);
    return identifiers;
}

}  // namespace quillmere
