#include "Quillmere/AppDelegate.h"
#include "Quillmere/Platform/Application.h"
#include "Quillmere/Platform/SingleInstance.h"

#include <cstdlib>

namespace {

using quillmere::AppDelegate;
using quillmere::SingleInstance;

void perform(SingleInstance::Request request, AppDelegate& delegate) {
    switch (request) {
        case SingleInstance::Request::settings:
            delegate.openSettings();
            break;
        case SingleInstance::Request::toggleActive:
            delegate.toggleActive();
            break;
        case SingleInstance::Request::quit:
            // One that came before the event loop runs ends it all the same.
            QMetaObject::invokeMethod(qApp, &QCoreApplication::quit, Qt::QueuedConnection);
            break;
    }
}

}  // namespace

int main(int argc, char** argv) {
    // Not the desktop's, which would bring its own looks into what the program
    // leaves to Qt, and differ from system to system.
    QApplication::setStyle(QStringLiteral("Fusion"));
    const auto application = quillmere::makeApplication(argc, argv);
    QApplication::setApplicationName("Quillmere");
    QApplication::setDesktopFileName("org.quillmere.Quillmere");
    QApplication::setQuitOnLastWindowClosed(false);

    const auto instance = quillmere::makeSingleInstance();
    if (!instance->claim()) return 0;

    int status = 0;
    {
        AppDelegate delegate(quillmere::makePlatform());
        const bool isFirstStart = delegate.isFirstStart();
        delegate.applicationDidFinishLaunching();
        // Whoever starts it for the first time must see what it does, and how.
        if (isFirstStart) delegate.openSettings();
        instance->setOnRequest([&delegate](SingleInstance::Request request) { perform(request, delegate); });
        status = QApplication::exec();
        instance->setOnRequest(nullptr);
    }
    // Not through Qt's own end, which waits for a name look-up that is under
    // way: ten seconds when no name server answers. All that has to be left in
    // order went with the delegate.
    std::_Exit(status);
}
