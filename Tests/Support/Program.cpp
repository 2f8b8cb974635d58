#include "Tests/Support/Program.h"

#include "Tests/Support/WaitUntil.h"

#include <QMargins>

namespace quillmere::support {

namespace {

constexpr const char* plateTitle = "Quillmere plate";

Environment merged(Environment environment, const Environment& additions) {
    for (const auto& [name, value] : additions)
        environment[name] = value;
    return environment;
}

}  // namespace

Program::Program(const std::filesystem::path& program, Desktop& desktop, const Options& options)
    : desktop_(desktop),
      process_({
          .arguments = {program.string()},
          .environment = merged(desktop.environment(), options.additions),
          .output = desktop.folder() / "quillmere.log",
          .inheritedDescriptors = {},
          .prepare = options.prepare,
      }) {}

bool Program::holdsGrab(Key key, unsigned int modifiers) const {
    return desktop_.server().isGrabbed(key, modifiers);
}

bool Program::waitForGrab(Key key, unsigned int modifiers) {
    waitUntil([&] { return holdsGrab(key, modifiers) || !process_.isRunning(); });
    return holdsGrab(key, modifiers);
}

bool Program::waitForTrayItem() {
    waitUntil([this] { return desktop_.tray()->hasItem() || !process_.isRunning(); });
    return desktop_.tray()->hasItem();
}

std::optional<WindowInfo> Program::plate() const {
    auto window = desktop_.connection().visibleWindow(plateTitle);
    if (!window) return std::nullopt;
    // left, right, top, bottom: what of the window is shadow
    const auto shadow = desktop_.connection().numbers(window->id, "_GTK_FRAME_EXTENTS", 4);
    const auto side = [&](std::size_t index) { return static_cast<int>(shadow.size() == 4 ? shadow[index] : 0); };
    window->frame = window->frame.marginsRemoved(QMargins(side(0), side(2), side(1), side(3)));
    return window;
}

bool Program::waitForPlate() const {
    return waitUntil([this] { return plate().has_value(); });
}

bool Program::waitForNoPlate() const {
    return waitUntil([this] { return !plate().has_value(); });
}

}  // namespace quillmere::support
