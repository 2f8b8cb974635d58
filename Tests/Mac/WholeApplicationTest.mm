#include "Tests/Mac/WholeApplicationTest.h"

#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/LoginItems.h"
#include "Tests/Mac/Doubles/Preferences.h"
#include "Tests/Support/Settle.h"

#include <QAction>
#include <QMenu>

namespace quillmere {

using windowserver::Fate;

WholeApplicationTest::~WholeApplicationTest() {
    delegate.reset();
    settle();
    appkit::reset();
    loginitems::reset();
    macversion::major = 26;
    Palette::setDark(false);
}

void WholeApplicationTest::store(const Config& config) {
    preferences::store("config", cf::make(cf::Kind::data, encodeConfig(config)));
}

Config WholeApplicationTest::threeOnCommandK() {
    return {true, {{makeUUID(), Shortcut{keyK, Modifiers::command}, {english, ukrainian, japanese}}}, {}};
}

void WholeApplicationTest::launch() {
    Platform platform = makePlatform();
    auto manual = std::make_unique<ManualQueue>();
    queue = manual.get();
    platform.mainQueue = std::move(manual);
    delegate = std::make_unique<AppDelegate>(std::move(platform));
    delegate->applicationDidFinishLaunching();
}

Fate WholeApplicationTest::pressCommandK() {
    const Fate fate = down(keyK, command);
    EXPECT_EQ(up(keyK, command), fate);
    queue->advance(0);
    return fate;
}

NSWindow* WholeApplicationTest::plate() {
    for (NSWindow* window : appkit::windows())
        if ([window isKindOfClass:[NSPanel class]]) return window;
    return nil;
}

QAction* WholeApplicationTest::entry(int index) {
    return delegate->statusItem()->menu().actions().at(index);
}

QWidget& WholeApplicationTest::openSettings() {
    entry(1)->trigger();
    settle();
    return *delegate->settingsWindow()->window();
}

}  // namespace quillmere
