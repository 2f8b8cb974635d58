#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandKeyboards.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>
#include <cctype>
#include <string_view>

namespace quillmere {

namespace {

// How the names of virtual keyboards begin; that of who has made one may follow.
constexpr std::string_view virtualPrefix = "hl-virtual-keyboard";

/// "us, ch(fr)" and ",dvorak" belong together item by item; a variant may also
/// stand in brackets.
std::vector<XkbLayout> layoutsIn(const QJsonObject& keyboard) {
    std::vector<XkbLayout> layouts;
    const QString all = keyboard["layout"].toString();
    if (all.trimmed().isEmpty()) return layouts;
    const QStringList variants = keyboard["variant"].toString().split(u',');
    for (const QString& item : all.split(u',')) {
        const QString name = item.trimmed();
        const qsizetype bracket = name.indexOf(u'(');
        QString variant = variants.value(static_cast<qsizetype>(layouts.size())).trimmed();
        if (bracket >= 0 && variant.isEmpty()) variant = name.mid(bracket + 1).chopped(name.endsWith(u')') ? 1 : 0);
        layouts.push_back({name.left(bracket < 0 ? name.size() : bracket).toStdString(), variant.toStdString()});
    }
    return layouts;
}

std::optional<std::size_t> indexOf(const std::vector<XkbLayout>& layouts, const XkbLayout& layout) {
    const auto found = std::ranges::find(layouts, layout);
    if (found == layouts.end()) return std::nullopt;
    return static_cast<std::size_t>(found - layouts.begin());
}

/// The index of the layout in use.
std::optional<std::size_t> activeIn(const QJsonObject& keyboard, const std::vector<XkbLayout>& layouts,
                                    XkbLayoutRegistry& registry) {
    if (const QJsonValue index = keyboard["active_layout_index"]; index.isDouble()) {
        const int number = index.toInt(-1);
        if (number < 0 || static_cast<std::size_t>(number) >= layouts.size()) return std::nullopt;
        return static_cast<std::size_t>(number);
    }
    const std::string name = keyboard["active_keymap"].toString().toStdString();
    const auto listed = registry.named({name}).front();
    return listed ? indexOf(layouts, listed->layout) : std::nullopt;
}

/// A device names itself: a space in its name would be read as the next word.
bool isSafe(const std::string& name) {
    return !name.empty() && std::ranges::all_of(name, [](char letter) {
        const auto byte = static_cast<unsigned char>(letter);
        return std::isspace(byte) == 0 && std::iscntrl(byte) == 0;
    });
}

}  // namespace

std::string HyprlandKeyboards::Keyboard::request(const XkbLayout& layout) const {
    const std::optional<std::size_t> index = indexOf(layouts, layout);
    if (!index || !isSafe(name)) return {};
    return "switchxkblayout " + name + ' ' + std::to_string(*index);
}

std::optional<HyprlandKeyboards> HyprlandKeyboards::parse(QByteArray answer, XkbLayoutRegistry& registry) {
    // Of a keyboard without a keymap some versions write what is no JSON.
    answer.replace(R"("active_layout_index": none)", R"("active_layout_index": null)");
    const QJsonObject devices = QJsonDocument::fromJson(answer).object();
    if (!devices["keyboards"].isArray()) return std::nullopt;
    HyprlandKeyboards result;
    std::string marked;
    for (const auto& entry : devices["keyboards"].toArray()) {
        const QJsonObject object = entry.toObject();
        Keyboard keyboard{.name = object["name"].toString().toStdString(),
                          .address = object["address"].toString().toStdString(),
                          .layouts = layoutsIn(object),
                          .active = std::nullopt};
        if (keyboard.layouts.empty()) continue;
        keyboard.active = activeIn(object, keyboard.layouts, registry);
        keyboard.isVirtual = keyboard.name.starts_with(virtualPrefix);
        if (object["main"].toBool()) marked = keyboard.name;
        result.keyboards_.push_back(std::move(keyboard));
    }
    result.chooseMain(marked);
    return result;
}

void HyprlandKeyboards::chooseMain(const std::string& marked) {
    isMainVirtual_ = std::ranges::all_of(keyboards_, &Keyboard::isVirtual);
    for (std::size_t i = 0; i < keyboards_.size(); ++i) {
        const Keyboard& keyboard = keyboards_[i];
        const bool isMarked = keyboard.name == marked;
        if (!counts(keyboard) || (!isMarked && keyboard.layouts.size() <= layouts_.size())) continue;
        main_ = i;
        layouts_ = keyboard.layouts;
        if (isMarked) return;
    }
}

std::optional<XkbLayout> HyprlandKeyboards::current(const std::optional<XkbLayout>& last) const {
    const bool isStillUsed = last && std::ranges::any_of(keyboards_, [&](const Keyboard& keyboard) {
                                 return isPeer(keyboard) && keyboard.uses(*last);
                             });
    if (isStillUsed) return last;
    if (keyboards_.empty() || !keyboards_[main_].active) return std::nullopt;
    return layouts_[*keyboards_[main_].active];
}

std::optional<XkbLayout> HyprlandKeyboards::current(const std::string& name) const {
    const auto found = std::ranges::find(keyboards_, name, &Keyboard::name);
    if (found == keyboards_.end() || !isPeer(*found) || !found->active) return std::nullopt;
    return layouts_[*found->active];
}

bool HyprlandKeyboards::isInUse(const XkbLayout& layout) const {
    return indexOf(layouts_, layout) && std::ranges::all_of(keyboards_, [&](const Keyboard& keyboard) {
               return !isPeer(keyboard) || keyboard.uses(layout);
           });
}

std::string HyprlandKeyboards::request(const XkbLayout& layout) const {
    const std::optional<std::size_t> index = indexOf(layouts_, layout);
    const bool isUniform =
        std::ranges::all_of(keyboards_, [&](const Keyboard& each) { return isPeer(each) || !counts(each); });
    if (!index || !isUniform) return {};
    // Never "next": each keyboard would go on from where it is.
    return "switchxkblayout all " + std::to_string(*index);
}

std::vector<std::string> HyprlandKeyboards::requests(const XkbLayout& layout) const {
    std::vector<std::string> result;
    for (const Keyboard& keyboard : keyboards_) {
        if (!counts(keyboard)) continue;
        if (std::string request = keyboard.request(layout); !request.empty()) result.push_back(std::move(request));
    }
    return result;
}

std::vector<std::string> HyprlandKeyboards::requests(const XkbLayout& layout,
                                                     const std::set<std::string>& names) const {
    std::vector<std::string> result;
    for (const Keyboard& keyboard : keyboards_) {
        if (!names.contains(keyboard.name) || !isPeer(keyboard) || keyboard.uses(layout)) continue;
        if (std::string request = keyboard.request(layout); !request.empty()) result.push_back(std::move(request));
    }
    return result;
}

std::set<std::string> HyprlandKeyboards::newcomers(const HyprlandKeyboards& before) const {
    std::set<std::string> names;
    for (const Keyboard& keyboard : keyboards_) {
        const bool wasThere = std::ranges::any_of(before.keyboards_, [&](const Keyboard& other) {
            return other.name == keyboard.name && other.address == keyboard.address;
        });
        if (!wasThere) names.insert(keyboard.name);
    }
    return names;
}

}  // namespace quillmere
