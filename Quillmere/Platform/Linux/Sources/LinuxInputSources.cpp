#include "Quillmere/Platform/Linux/Sources/LinuxInputSources.h"

#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxFramework.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusFramework.h"
#include "Quillmere/Platform/Linux/Sources/Kde/KdeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace quillmere {

namespace {

constexpr int statusRefused = 1;

}  // namespace

LinuxInputSources::LinuxInputSources(std::vector<std::unique_ptr<DesktopInputSources>> kinds)
    : kinds_(std::move(kinds)) {
    std::erase(kinds_, nullptr);
}

/// The answer of the first kind that is there, also once it has been asked: a
/// desktop may be found to have gone only then.
template <typename Answer, typename Ask>
Answer LinuxInputSources::ask(Answer none, const Ask& question) {
    for (const auto& kind : kinds_) {
        if (!kind->isAvailable()) continue;
        Answer answer = question(*kind);
        if (kind->isAvailable()) return answer;
    }
    return none;
}

std::vector<InputSourceRecord> LinuxInputSources::sources() {
    return ask(std::vector<InputSourceRecord>(), [](DesktopInputSources& kind) { return kind.sources(); });
}

std::optional<std::string> LinuxInputSources::currentID() {
    return ask(std::optional<std::string>(), [](DesktopInputSources& kind) { return kind.currentID(); });
}

int LinuxInputSources::select(const InputSourceRecord& source) {
    return ask(statusRefused, [&](DesktopInputSources& kind) { return kind.select(source); });
}

std::unique_ptr<ComposedInputSources> makeLinuxInputSources() {
    std::vector<std::unique_ptr<DesktopInputSources>> kinds;
    // Compositors first, since most of them have an X server too; and GNOME and
    // KDE have the last word about their layouts on one.
    std::unique_ptr<DesktopInputSources> gnome = GnomeInputSources::create();
    // The desktops live as long as the frameworks beside them, or longer.
    const auto isOnGnome = [gnome = gnome.get()] { return gnome != nullptr && gnome->isAvailable(); };
    kinds.push_back(std::move(gnome));
    kinds.push_back(SwayInputSources::create());
    kinds.push_back(HyprlandInputSources::create());
    kinds.push_back(KdeInputSources::create());
    std::unique_ptr<XkbInputSources> server = XkbInputSources::create();
    std::function<bool(const XkbLayout&)> useLayout;
    if (server) useLayout = [server = server.get()](const XkbLayout& layout) { return server->useAlone(layout); };
    kinds.push_back(std::move(server));
    std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
    frameworks.push_back(FcitxFramework::create());
    // GNOME Shell has its engines among its own sources.
    frameworks.push_back(std::make_unique<IbusFramework>(isOnGnome, useLayout));
    return std::make_unique<ComposedInputSources>(std::make_unique<LinuxInputSources>(std::move(kinds)),
                                                  std::move(frameworks));
}

}  // namespace quillmere
