// A desktop that prefers dark or light, on the session's bus.
//
//     settings_portal light|dark

#include "Tests/Support/SettingsPortal.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <iostream>
#include <string_view>

int main(int argc, char** argv) {
    using quillmere::support::SettingsPortal;
    QCoreApplication application(argc, argv);
    const bool isDark = std::string_view(argv[1]) == "dark";
    const SettingsPortal portal(QDBusConnection::sessionBus(),
                                isDark ? SettingsPortal::Scheme::dark : SettingsPortal::Scheme::light);
    std::cout << "ready" << std::endl;
    return QCoreApplication::exec();
}
