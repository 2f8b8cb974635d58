#include "Tests/Support/DBusCall.h"

#include "Tests/Support/WaitUntil.h"

#include <QDBusPendingCall>

namespace quillmere::support {

QDBusMessage callMethod(const QDBusConnection& bus, const QString& service, const QString& path,
                        const QString& interface, const QString& method, const QVariantList& arguments) {
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    call.setAutoStartService(false);
    const QDBusPendingCall pending = bus.asyncCall(call, static_cast<int>(patience.count()));
    if (!waitUntil([&] { return pending.isFinished(); }))
        return QDBusMessage::createError(QDBusError::NoReply, method + QStringLiteral(" is not answered"));
    return pending.reply();
}

}  // namespace quillmere::support
