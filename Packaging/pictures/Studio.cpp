#include "Packaging/pictures/Studio.h"

#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <cstdio>
#include <utility>
#include <vector>

#include <linux/input-event-codes.h>

namespace quillmere::pictures {

namespace {

using namespace support;
using Scheme = SettingsPortal::Scheme;

constexpr std::array<Key, 2> controlAlt{keys::leftControl, keys::leftAlt};
constexpr unsigned int controlAltBits = (1U << 2) | (1U << 3);
constexpr std::chrono::milliseconds frameTime(100);

/// "hello ", "привіт ", "שלום": the kernel's numbers of their keys.
const std::array<std::vector<int>, 3> greetings{{
    {KEY_H, KEY_E, KEY_L, KEY_L, KEY_O, KEY_SPACE},
    {KEY_G, KEY_H, KEY_B, KEY_D, KEY_S, KEY_N, KEY_SPACE},
    {KEY_A, KEY_K, KEY_U, KEY_O},
}};
/// From them to the X server's.
constexpr Key keyOffset = 8;

/// All layouts on ⌃⌥Space, and two of them on a lone Fn.
std::string configuration() {
    return configurationText({
        {.sources = {"xkb:us", "xkb:ua", "xkb:il"}},
        {.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:il"}},
    });
}

void require(bool isThere, const std::string& what) {
    if (!isThere) throw SupportError("not there for the picture: " + what);
}

Desktop::Options options(int scale, Scheme scheme) {
    return {.layouts = "us,ua,il", .screen = QSize(1280, 800) * scale, .hasCompositor = true, .scheme = scheme};
}

}  // namespace

struct Studio::Scene {
    Scene(const Studio& studio, int scale, Scheme scheme, Paper::Kind kind)
        : desktop(options(scale, scheme)),
          scaling{{"QT_SCALE_FACTOR", std::to_string(scale)}},
          paper(ChildProcess::Options{
              .arguments = {studio.paper_, kind == Paper::Kind::sheet ? "--sheet" : "--wallpaper"},
              .environment = desktop.environment(),
              .output = desktop.folder() / "paper.log",
              .inheritedDescriptors = {},
              .prepare = {}}) {
        const auto isUp = [this] { return desktop.connection().visibleWindow(Paper::title).has_value(); };
        require(waitUntil(isUp), "the paper: " + paper.output());
        desktop.settings().set("config", configuration());
        program.emplace(studio.program_, desktop, Program::Options{.additions = scaling, .prepare = {}});
        require(program->waitForTrayItem() && program->waitForGrab(keys::space, controlAltBits), "the program");
    }

    void pressShortcut() { desktop.typist().chord(controlAlt, keys::space); }

    /// The plate with a margin, once it has come up whole.
    QImage plate(int margin) {
        pressShortcut();
        QImage last;
        const auto isAtRest = [&] {
            const auto plate = program->plate();
            if (!plate) return false;
            const QImage now = desktop.screen().shot().copy(plate->frame.adjusted(-margin, -margin, margin, margin));
            return now == std::exchange(last, now);
        };
        require(waitUntil(isAtRest), "the plate");
        return last;
    }

    /// The settings, once they no longer look like `before` and have come to rest.
    QImage settingsOtherThan(const QImage& before) {
        QImage last;
        const auto isAtRest = [&] {
            const auto window = desktop.connection().visibleWindow("Quillmere");
            if (!window) return false;
            const QImage now = desktop.screen().shot().copy(window->frame);
            const bool isSame = now == std::exchange(last, now);
            return isSame && now != before && holdsFor([] { return true; }, frameTime);
        };
        require(waitUntil(isAtRest), "the settings");
        return last;
    }

    /// Clicks at this place of the settings until there is something else below it.
    void openTab(QPoint tab) {
        const auto window = desktop.connection().visibleWindow("Quillmere");
        require(window.has_value(), "the settings");
        const QRect below = window->frame.adjusted(0, 2 * tab.y(), 0, 0);
        const QImage before = desktop.screen().shot().copy(below);
        const auto isOpen = [&] {
            desktop.typist().movePointer(window->frame.topLeft() + tab);
            holdsFor([] { return true; }, frameTime);
            desktop.typist().click();
            return waitUntil([&] { return desktop.screen().shot().copy(below) != before; }, frameTime * 10);
        };
        require(waitUntil(isOpen), "the other tab");
    }

    Desktop desktop;
    Environment scaling;
    ChildProcess paper;
    std::optional<Program> program;
};

Studio::Studio(std::filesystem::path program, std::filesystem::path paper, std::filesystem::path folder)
    : program_(std::move(program)), paper_(std::move(paper)), folder_(std::move(folder)) {}

void Studio::takePlates() const {
    for (const auto& [scheme, name] : {std::pair{Scheme::light, "plate-light.png"}, {Scheme::dark, "plate-dark.png"}}) {
        Scene scene(*this, 2, scheme, Paper::Kind::wallpaper);
        savePicture(scene.plate(48), folder_ / name);
    }
}

void Studio::takeSettings() const {
    // The middle of the second tab's chip, from the window's corner.
    constexpr QPoint generalTab(272, 68);
    for (const auto& [scheme, name] : {std::pair{Scheme::light, "light"}, {Scheme::dark, "dark"}}) {
        Scene scene(*this, 2, scheme, Paper::Kind::wallpaper);
        scene.desktop.tray()->click("Settings…");
        const QImage layouts = scene.settingsOtherThan({});
        savePicture(layouts, folder_ / (std::string("settings-") + name + ".png"));
        scene.openTab(generalTab);
        // Away again, or the chip shows that the pointer is over it.
        scene.desktop.typist().movePointer({5, 5});
        savePicture(scene.settingsOtherThan(layouts), folder_ / (std::string("general-") + name + ".png"));
    }
}

void Studio::takeTyping() const {
    Scene scene(*this, 1, Scheme::light, Paper::Kind::sheet);
    const QRect view(290, 110, 700, 400);
    int number = 0;
    const auto shoot = [&](int frames) {
        for (int i = 0; i < frames; ++i) {
            holdsFor([] { return true; }, frameTime);
            std::array<char, 16> name{};
            std::snprintf(name.data(), name.size(), "%03d.png", number++);
            savePicture(scene.desktop.screen().shot().copy(view), folder_ / "frames" / name.data());
        }
    };
    shoot(3);
    for (const std::vector<int>& greeting : greetings) {
        for (const int code : greeting) {
            scene.desktop.typist().tap(static_cast<Key>(code) + keyOffset);
            shoot(1);
        }
        shoot(3);
        scene.pressShortcut();
        shoot(&greeting == &greetings.back() ? 16 : 8);
    }
}

}  // namespace quillmere::pictures
