#include "Quillmere/Doctor/Doctor.h"
#include "Quillmere/Doctor/Report.h"
#include "Quillmere/Updates/FeedSession.h"

#include <QApplication>
#include <QEventLoop>
#include <QLoggingCategory>

#include <cstdlib>
#include <iostream>
#include <optional>
#include <string_view>

namespace {

using namespace quillmere;

constexpr const char* usage = "usage: quillmere-doctor [--try]\n";

/// The feed's own limits end the wait.
UpdateResult askFeed(const UpdateChecker& checker) {
    FeedSession session;
    std::optional<UpdateResult> result;
    QEventLoop loop;
    checker.check(session, {"en"}, [&](const UpdateResult& answer) {
        result = answer;
        loop.quit();
    });
    loop.exec();
    return *result;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view argument = argc > 1 ? argv[1] : "";
    if (argument == "--help") {
        std::cout << usage;
        return 0;
    }
    if (argc > 2 || (argc == 2 && argument != "--try")) {
        std::cerr << usage;
        return 2;
    }
    // Where no display answers, there is all the more to tell; and what Qt says
    // of the ones that it has tried is no row of the page.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "xcb;wayland;offscreen");
    QLoggingCategory::setFilterRules(QStringLiteral("qt.qpa.*=false"));
    const QApplication application(argc, argv);

    const auto examination = makeExamination();
    std::cout << report(Doctor(*examination, askFeed).examine(argument == "--try")) << std::flush;
    // As the program ends: not after a look-up that is under way.
    std::_Exit(0);
}
