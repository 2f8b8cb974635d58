#include "Tests/Support/GnomeTypist.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/KeyMovements.h"
#include "Tests/Support/SupportError.h"

#include <QDBusObjectPath>

namespace quillmere::support {

namespace {

const QString service = QStringLiteral("org.gnome.Mutter.RemoteDesktop");
const QString sessionInterface = QStringLiteral("org.gnome.Mutter.RemoteDesktop.Session");

}  // namespace

GnomeTypist::GnomeTypist(const QDBusConnection& bus) : bus_(bus) {
    const QDBusMessage created = callMethod(bus_, service, QStringLiteral("/org/gnome/Mutter/RemoteDesktop"), service,
                                            QStringLiteral("CreateSession"));
    session_ = created.arguments().value(0).value<QDBusObjectPath>().path();
    const QDBusMessage started = callMethod(bus_, service, session_, sessionInterface, QStringLiteral("Start"));
    if (started.type() == QDBusMessage::ErrorMessage)
        throw SupportError("nobody can play the keyboard: " + started.errorMessage().toStdString());
    // It is plugged in with its first key.
    type("+shift -shift");
}

void GnomeTypist::type(std::string_view movements) const {
    for (const auto& [code, isPress] : keyMovements(movements)) {
        QDBusMessage key = QDBusMessage::createMethodCall(service, session_, sessionInterface,
                                                          QStringLiteral("NotifyKeyboardKeycode"));
        key << code << isPress;
        if (!bus_.send(key)) throw SupportError("the message bus is gone");
    }
}

}  // namespace quillmere::support
