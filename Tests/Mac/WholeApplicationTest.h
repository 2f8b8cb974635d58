#pragma once

#include "Quillmere/AppDelegate.h"
#include "Tests/Mac/MacTest.h"
#include "Tests/Support/ManualQueue.h"

#include <memory>

class QAction;

@class NSWindow;

namespace quillmere {

/// The program itself, from its delegate down, on the layer for macOS: only the
/// system beneath is played, and the time.
class WholeApplicationTest : public MacTest {
protected:
    ~WholeApplicationTest() override;

    /// Puts a configuration into the preferences.
    static void store(const Config& config);
    /// One group of all three sources, bound to ⌘K.
    static Config threeOnCommandK();
    void launch();
    /// Presses and releases ⌘K.
    windowserver::Fate pressCommandK();
    /// The plate's panel; nil when the program does not run.
    static NSWindow* plate();
    /// An entry of the status item's menu.
    QAction* entry(int index);
    /// Opens the settings as the user does.
    QWidget& openSettings();

    static constexpr std::int64_t keyK = 40;
    static constexpr std::uint64_t command = KeyEventFlags::command;

    ManualQueue* queue = nullptr;  ///< owned by the application
    std::unique_ptr<AppDelegate> delegate;
};

}  // namespace quillmere
