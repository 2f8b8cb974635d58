#include "Quillmere/Platform/Linux/Desktop/DesktopWorkspace.h"

#include <QApplication>
#include <QDesktopServices>
#include <QLocale>
#include <QUrl>
#include <QWidget>

namespace quillmere {

bool DesktopWorkspace::open(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

void DesktopWorkspace::beep() {
    QApplication::beep();
}

std::vector<std::string> DesktopWorkspace::preferredLanguages() const {
    std::vector<std::string> languages;
    for (const QString& language : QLocale::system().uiLanguages())
        languages.push_back(language.toStdString());
    return languages;
}

void DesktopWorkspace::bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace quillmere
