#include "Quillmere/Platform/Qt/QtWorkspace.h"

#include <QApplication>
#include <QDesktopServices>
#include <QLocale>
#include <QUrl>
#include <QWidget>

namespace quillmere {

bool QtWorkspace::open(const QUrl& url) {
    return QDesktopServices::openUrl(url);
}

void QtWorkspace::beep() {
    QApplication::beep();
}

std::vector<std::string> QtWorkspace::preferredLanguages() const {
    std::vector<std::string> languages;
    for (const QString& language : QLocale::system().uiLanguages())
        languages.push_back(language.toStdString());
    return languages;
}

void QtWorkspace::blendTitleBar(QWidget& /*window*/, const QColor& /*light*/, const QColor& /*dark*/) {}

void QtWorkspace::bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

}  // namespace quillmere
