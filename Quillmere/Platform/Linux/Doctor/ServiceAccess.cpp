#include "Quillmere/Platform/Linux/Doctor/ServiceAccess.h"

#include "TapService/KeyTapNames.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusReply>

#include <chrono>

namespace quillmere {

namespace {

constexpr std::chrono::milliseconds patience = std::chrono::seconds(10);

}  // namespace

ServiceAccess ServiceAccess::asked(const QDBusConnection& bus) {
    if (!bus.isConnected()) return {.kind = Kind::noBus, .problem = {}};
    const QDBusMessage call = QDBusMessage::createMethodCall(tap::KeyTapNames::service, tap::KeyTapNames::path,
                                                             tap::KeyTapNames::interface, "HasAccess");
    const QDBusReply<bool> reply = bus.call(call, QDBus::Block, static_cast<int>(patience.count()));
    if (reply.isValid()) return {.kind = reply.value() ? Kind::given : Kind::refused, .problem = {}};
    if (reply.error().type() == QDBusError::ServiceUnknown) return {.kind = Kind::missing, .problem = {}};
    return {.kind = Kind::silent, .problem = reply.error().message().toStdString()};
}

}  // namespace quillmere
