#include "Tests/Desktop/KdeTest.h"

#include "Tests/Support/DBusCall.h"

#include <QDBusArgument>

#include <fstream>
#include <iterator>

namespace quillmere::support {

KdeTest::KdeTest(bool isShown)
    : connection(bus.connect()),
      server(isShown ? std::make_unique<XServer>(folder.path(), environment, QSize(1280, 800)) : nullptr),
      kwin(folder.path(), environment, bus.address(), connection,
           {.display = isShown ? server->display() : std::string(), .hasXwayland = true}),
      typist(kwin.waylandDisplay()) {
    enterDesktop("KDE", kwin.waylandDisplay(), kwin.xDisplay());
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
}

void KdeTest::TearDown() {
    if (HasFailure() && server) {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        savePicture(Screen(server->display()).shot(), DesktopTest::artefacts() / "failures" / ("Kde." + name + ".png"));
    }
    ProgramTest::TearDown();
}

void KdeTest::startSwitching() {
    store({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
}

QDBusMessage KdeTest::callShortcuts(const char* method, const QVariantList& arguments) const {
    return callMethod(connection, "org.kde.kglobalaccel", "/kglobalaccel", "org.kde.KGlobalAccel", method, arguments);
}

std::string KdeTest::ownerOf(int key) const {
    const QDBusMessage reply = callShortcuts("getGlobalShortcutsByKey", {key});
    const auto list = reply.arguments().value(0).value<QDBusArgument>();
    if (list.currentSignature() != QLatin1String("a(ssssssaiai)")) return {};
    QString name;
    QString label;
    QString component;
    list.beginArray();
    if (!list.atEnd()) {
        list.beginStructure();
        list >> name >> label >> component;
    }
    return component.toStdString();
}

std::string KdeTest::storedShortcuts() const {
    std::ifstream stream(kwin.configHome() / "kglobalshortcutsrc");
    return {std::istreambuf_iterator<char>(stream), {}};
}

bool KdeTest::hasFocus(const char* title) const {
    const XConnection xwayland(kwin.xDisplay());
    const auto window = xwayland.visibleWindow(title);
    return window && xwayland.focusedWindow() == window->id;
}

void KdeTest::startRecording() {
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return hasFocus("Quillmere"); }));
    for (int i = 0; i < tabsToTheRecorder; ++i)
        typist.type("+tab -tab");
    typist.type("+space -space");
}

}  // namespace quillmere::support
