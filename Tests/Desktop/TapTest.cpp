#include "Tests/Desktop/TapTest.h"

#include <QThread>

#include <algorithm>
#include <ranges>

namespace quillmere::support {

TapTest::TapTest()
    : environment(baseEnvironment(folder.makeFolder("home"))),
      server(std::make_unique<XServer>(folder.path(), environment, QSize(640, 480))),
      decide([](const KeyEventFields&) { return InterceptDecision::swallow; }) {
    environment["DISPLAY"] = server->display();
    qputenv("DISPLAY", server->display().c_str());
    server->setLayouts("us,ua,de");
    windowManager = std::make_unique<WindowManager>(folder.path(), environment, server->connection());
    typist = std::make_unique<Typist>(server->display());
    witness = std::make_unique<Witness>(server->display(), Witness::Size::normal);
}

TapTest::~TapTest() {
    tap.reset();
    qunsetenv("DISPLAY");
}

void TapTest::install(const KeyInterest& interest) {
    tap = std::make_unique<X11EventTap>();
    tap->setInterest(interest);
    ASSERT_TRUE(tap->install([this](const KeyEventFields& event) {
        events.push_back(event);
        return event.type == KeyEventType::keyDown ? decide(event) : InterceptDecision::pass;
    }));
}

void TapTest::setKeymap(std::initializer_list<std::string> arguments) {
    std::vector<std::string> command{"setxkbmap", "-rules", "evdev", "-model", "pc105"};
    command.insert(command.end(), arguments);
    ASSERT_EQ(ChildProcess::run({.arguments = command,
                                 .environment = environment,
                                 .output = {},
                                 .inheritedDescriptors = {},
                                 .prepare = {}}),
              0);
}

void TapTest::waitForEverythingTyped() {
    const std::size_t before = witness->presses(keys::x);
    typist->tap(keys::x);
    ASSERT_TRUE(waitUntil([&] { return witness->presses(keys::x) > before; }));
}

void TapTest::waitForEverythingTypedWhileBusy() {
    const std::size_t before = witness->presses(keys::x);
    typist->tap(keys::x);
    ASSERT_TRUE(waitWhileBusy([&] { return witness->presses(keys::x) > before; }));
}

bool TapTest::waitWhileBusy(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        QThread::msleep(2);
    }
    return true;
}

bool TapTest::waitForEvents(std::uint32_t type, std::size_t wanted) {
    return waitUntil([&] { return count(type) >= wanted; });
}

std::size_t TapTest::count(std::uint32_t type) const {
    return static_cast<std::size_t>(std::ranges::count(events, type, &KeyEventFields::type));
}

TapTest::Types TapTest::types() const {
    Types result;
    std::ranges::transform(events, std::back_inserter(result), &KeyEventFields::type);
    return result;
}

}  // namespace quillmere::support
