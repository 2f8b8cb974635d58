#include "Tests/TapService/FakeAuthority.h"

#include <QDBusArgument>
#include <QMap>

#include <stdexcept>

namespace quillmere {

FakeAuthority::FakeAuthority(const QDBusConnection& bus) : bus_(bus) {
    if (!bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/PolicyKit1/Authority"), this)
        || !bus_.registerService(QStringLiteral("org.freedesktop.PolicyKit1")))
        throw std::runtime_error("no authority on the bus");
}

QString FakeAuthority::introspect(const QString&) const {
    return {};
}

bool FakeAuthority::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
    if (message.member() == QLatin1String("CheckAuthorization")) {
        checkAuthorization(message, connection);
        return true;
    }
    if (message.member() != QLatin1String("CancelCheckAuthorization")) return false;
    cancelled << message.arguments().at(0).toString();
    connection.send(message.createReply());
    return true;
}

void FakeAuthority::checkAuthorization(const QDBusMessage& call, const QDBusConnection& connection) {
    const QList<QVariant> arguments = call.arguments();
    QString kind;
    QVariantMap details;
    const auto subject = arguments.at(0).value<QDBusArgument>();
    subject.beginStructure();
    subject >> kind >> details;
    subject.endStructure();
    questions.push_back(
        {kind == QLatin1String("system-bus-name") ? details.value(QStringLiteral("name")).toString() : kind,
         arguments.at(1).toString(), arguments.at(3).toUInt(), arguments.at(4).toString()});
    switch (answer) {
        case Answer::ask:
            open_ = call;
            return;
        case Answer::yes:
        case Answer::no:
            connection.send(reply(call, answer == Answer::yes));
            return;
        case Answer::error:
            connection.send(call.createErrorReply(QStringLiteral("org.freedesktop.PolicyKit1.Error.Failed"), {}));
            return;
    }
}

void FakeAuthority::finish(bool isAuthorized) {
    bus_.send(reply(open_, isAuthorized));
}

QDBusMessage FakeAuthority::reply(const QDBusMessage& call, bool isAuthorized) {
    QDBusArgument result;
    result.beginStructure();
    result << isAuthorized << false;
    result.beginMap(QMetaType(QMetaType::QString), QMetaType(QMetaType::QString));
    result.endMap();
    result.endStructure();
    return call.createReply(QVariant::fromValue(result));
}

}  // namespace quillmere
