#pragma once

#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11EventTap.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/Typist.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/WindowManager.h"
#include "Tests/Support/Witness.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::support {

/// The X11 tap in this process, on a server of its own with an application
/// that looks on. This thread is the tap's main thread.
class TapTest : public testing::Test {
protected:
    using Types = std::vector<std::uint32_t>;

    static constexpr std::array<Key, 2> controlAlt{keys::leftControl, keys::leftAlt};
    static constexpr Shortcut controlAltSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};
    static constexpr std::uint64_t controlAltFlags = KeyEventFlags::control | KeyEventFlags::option;

    TapTest();
    ~TapTest() override;

    /// Installs a tap that swallows every press of interest.
    void install(const KeyInterest& interest);

    /// setxkbmap with these arguments.
    void setKeymap(std::initializer_list<std::string> arguments);

    /// Types a letter and waits until the witness has it.
    void waitForEverythingTyped();
    /// The same without running the event loop: the main thread stays busy.
    void waitForEverythingTypedWhileBusy();
    /// Waits without running the event loop.
    static bool waitWhileBusy(const std::function<bool()>& condition);

    /// Waits until the tap has delivered this many events of this type.
    bool waitForEvents(std::uint32_t type, std::size_t count);
    std::size_t count(std::uint32_t type) const;
    Types types() const;

    TemporaryFolder folder;
    Environment environment;
    std::unique_ptr<XServer> server;
    std::unique_ptr<WindowManager> windowManager;
    std::unique_ptr<Typist> typist;
    std::unique_ptr<Witness> witness;
    std::unique_ptr<X11EventTap> tap;

    /// What the callback was given.
    std::vector<KeyEventFields> events;
    /// What it answers to a press.
    std::function<InterceptDecision(const KeyEventFields&)> decide;
};

}  // namespace quillmere::support
