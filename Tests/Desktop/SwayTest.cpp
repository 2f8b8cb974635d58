#include "Tests/Desktop/SwayTest.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmere::support {

namespace {

Sway::Options onServer(Sway::Options options, const XServer& server) {
    options.display = server.display();
    return options;
}

}  // namespace

SwayTest::SwayTest(const Sway::Options& options)
    : systemBus(folder.makeFolder("system"), environment),
      server(folder.path(), environment, QSize(1280, 800)),
      sway(std::in_place, folder.path(), environment, onServer(options, server)),
      screen(server.display()) {
    enterDesktop("sway", sway->waylandDisplay(), sway->xDisplay());
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus.address();
    environment["SWAYSOCK"] = sway->socket();
}

void SwayTest::TearDown() {
    if (HasFailure()) {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        const std::string name = std::string(test->test_suite_name()) + "." + test->name() + ".png";
        savePicture(screen.shot(), DesktopTest::artefacts() / "failures" / name);
    }
    ProgramTest::TearDown();
}

void SwayTest::startService() {
    service.emplace(systemBus.address(), folder.path());
    service->grant();
}

void SwayTest::startSwitching() {
    store({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    startService();
    launch();
    ASSERT_TRUE(waitUntil([this] { return service->isGrabbed() || !program->isRunning(); }));
    ASSERT_TRUE(program->isRunning());
}

QImage SwayTest::takePicture(const std::string& name) const {
    const QImage picture = screen.shot();
    savePicture(picture, DesktopTest::artefacts() / "sway" / (name + ".png"));
    return picture;
}

bool SwayTest::waitForPicture(const std::string& name) {
    const QColor empty = screen.color(corner);
    const bool isShown = waitUntil([&] { return screen.color(middle) != empty; });
    takePicture(name);
    return isShown;
}

QRect SwayTest::plateFrame(const QImage& picture) {
    constexpr int lightest = 100;
    QRect frame;
    for (int y = 0; y < picture.height(); ++y) {
        const auto* line = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
        const auto* end = line + picture.width();
        const auto isLight = [](QRgb pixel) { return qRed(pixel) > lightest; };
        const auto* first = std::find_if(line, end, isLight);
        if (first == end) continue;
        const auto last = std::find_if(std::reverse_iterator(end), std::reverse_iterator(first), isLight);
        frame |= QRect(QPoint(static_cast<int>(first - line), y), QPoint(static_cast<int>(last.base() - line) - 1, y));
    }
    return frame;
}

QRect SwayTest::waitForPlate(const std::string& pictureName) {
    QRect frame;
    waitUntil([&] {
        const QRect before = std::exchange(frame, plateFrame(screen.shot()));
        return !frame.isEmpty() && frame == before;
    });
    takePicture(pictureName);
    return frame;
}

}  // namespace quillmere::support
