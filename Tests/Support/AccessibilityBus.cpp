#include "Tests/Support/AccessibilityBus.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVariant>

#include <algorithm>
#include <csignal>

namespace quillmere::support {

namespace {

const QString registryService = QStringLiteral("org.a11y.atspi.Registry");
const QString rootPath = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString accessibleInterface = QStringLiteral("org.a11y.atspi.Accessible");
const QString componentInterface = QStringLiteral("org.a11y.atspi.Component");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
constexpr uint screenCoordinates = 0;  // ATSPI_COORD_TYPE_SCREEN
constexpr uint labelledBy = 2;         // ATSPI_RELATION_LABELLED_BY

QVariant propertyOf(const QDBusConnection& bus, const QString& service, const QString& path, const QString& interface,
                    const QString& name) {
    const QDBusMessage reply =
        callMethod(bus, service, path, propertiesInterface, QStringLiteral("Get"), {interface, name});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    return reply.arguments().first().value<QDBusVariant>().variant();
}

/// Reads a list of objects, each by its service and its path.
std::vector<std::pair<QString, QString>> readReferences(const QDBusArgument& list) {
    std::vector<std::pair<QString, QString>> references;
    list.beginArray();
    while (!list.atEnd()) {
        QString service;
        QDBusObjectPath path;
        list.beginStructure();
        list >> service >> path;
        list.endStructure();
        references.emplace_back(service, path.path());
    }
    list.endArray();
    return references;
}

}  // namespace

AccessibilityBus::AccessibilityBus(Desktop& desktop) {
    Environment environment = desktop.environment();
    // the service keeps its switches in the desktop's settings, which are not running here
    environment["GSETTINGS_BACKEND"] = "memory";
    launcher_ = std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = {"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"},
        .environment = environment,
        .output = desktop.folder() / "accessibility.log",
        .inheritedDescriptors = {},
        .prepare = {},
    });
    const QDBusConnection session = desktop.bus().connect();
    QString address;
    waitUntil([&] {
        const QDBusMessage reply = callMethod(session, QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"),
                                              QStringLiteral("org.a11y.Bus"), QStringLiteral("GetAddress"));
        if (reply.type() == QDBusMessage::ReplyMessage) address = reply.arguments().value(0).toString();
        return !address.isEmpty();
    });
    if (address.isEmpty()) throw SupportError("the accessibility bus does not start: " + launcher_->output());
    for (const char* const name : {"IsEnabled", "ScreenReaderEnabled"})
        callMethod(
            session, QStringLiteral("org.a11y.Bus"), QStringLiteral("/org/a11y/bus"), propertiesInterface,
            QStringLiteral("Set"),
            {QStringLiteral("org.a11y.Status"), QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(true))});
    static int count = 0;
    bus_ = std::make_unique<QDBusConnection>(
        QDBusConnection::connectToBus(address, QStringLiteral("accessibility-%1").arg(++count)));
    if (!bus_->isConnected()) throw SupportError("no connection to the accessibility bus");
    bus_->connect({}, {}, QStringLiteral("org.a11y.atspi.Event.Object"), QStringLiteral("StateChanged"), this,
                  SLOT(stateChanged(QString, int, int, QDBusMessage)));
    // programs send only the events that somebody has asked the registry for; asking also starts it
    QDBusMessage ask =
        QDBusMessage::createMethodCall(registryService, QStringLiteral("/org/a11y/atspi/registry"),
                                       QStringLiteral("org.a11y.atspi.Registry"), QStringLiteral("RegisterEvent"));
    ask << QStringLiteral("object:state-changed:showing");
    const QDBusMessage answer = bus_->call(ask, QDBus::Block, static_cast<int>(patience.count()));
    if (answer.type() != QDBusMessage::ReplyMessage)
        throw SupportError("no accessibility registry: " + answer.errorMessage().toStdString());
}

AccessibilityBus::~AccessibilityBus() {
    // killed, it would leave its own bus running
    launcher_->signal(SIGTERM);
    launcher_->waitForExit(patience);
}

void AccessibilityBus::stateChanged(const QString& state, int isSet, int, const QDBusMessage& message) {
    if (state == QLatin1String("showing") && isSet != 0) shown_.push_back(message.path());
}

std::vector<std::pair<QString, QString>> AccessibilityBus::children(const QString& service, const QString& path) const {
    const QDBusMessage reply = callMethod(*bus_, service, path, accessibleInterface, QStringLiteral("GetChildren"));
    if (reply.type() != QDBusMessage::ReplyMessage) return {};
    return readReferences(reply.arguments().first().value<QDBusArgument>());
}

Accessible AccessibilityBus::describe(const QString& service, const QString& path) const {
    Accessible object{.service = service, .path = path};
    object.name =
        propertyOf(*bus_, service, path, accessibleInterface, QStringLiteral("Name")).toString().toStdString();
    const QDBusMessage role = callMethod(*bus_, service, path, accessibleInterface, QStringLiteral("GetRole"));
    object.role = role.arguments().value(0).toUInt();
    const QDBusMessage states = callMethod(*bus_, service, path, accessibleInterface, QStringLiteral("GetState"));
    if (states.type() == QDBusMessage::ReplyMessage) {
        const auto words = qdbus_cast<QList<uint>>(states.arguments().first());
        object.states = words.value(0) | static_cast<std::uint64_t>(words.value(1)) << 32U;
    }
    const QDBusMessage frame =
        callMethod(*bus_, service, path, componentInterface, QStringLiteral("GetExtents"), {screenCoordinates});
    if (frame.type() == QDBusMessage::ReplyMessage) {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        const auto extents = frame.arguments().first().value<QDBusArgument>();
        extents.beginStructure();
        extents >> x >> y >> width >> height;
        extents.endStructure();
        object.frame = QRect(x, y, width, height);
    }
    return object;
}

void AccessibilityBus::collect(const QString& service, const QString& path, std::vector<Accessible>& into) const {
    for (const auto& [owner, child] : children(service, path)) {
        into.push_back(describe(owner, child));
        if (into.back().has(atspi::state::showing) || path == rootPath) collect(owner, child, into);
    }
}

std::vector<Accessible> AccessibilityBus::objects() const {
    std::vector<Accessible> objects;
    collect(registryService, rootPath, objects);
    return objects;
}

std::optional<Accessible> AccessibilityBus::find(const std::string& name) const {
    const std::vector<Accessible> all = objects();
    const auto found = std::ranges::find_if(
        all, [&](const Accessible& object) { return object.name == name && object.has(atspi::state::showing); });
    return found == all.end() ? std::nullopt : std::optional(*found);
}

std::vector<std::string> AccessibilityBus::names(unsigned int role) const {
    std::vector<std::string> names;
    for (const Accessible& object : objects())
        if (object.role == role && object.has(atspi::state::showing)) names.push_back(object.name);
    return names;
}

std::string AccessibilityBus::label(const Accessible& object) const {
    const QDBusMessage reply =
        callMethod(*bus_, object.service, object.path, accessibleInterface, QStringLiteral("GetRelationSet"));
    if (reply.type() != QDBusMessage::ReplyMessage) return {};
    std::string name;
    const auto relations = reply.arguments().first().value<QDBusArgument>();
    relations.beginArray();
    while (!relations.atEnd()) {
        uint kind = 0;
        relations.beginStructure();
        relations >> kind;
        for (const auto& [service, path] : readReferences(relations))
            if (kind == labelledBy) name = describe(service, path).name;
        relations.endStructure();
    }
    relations.endArray();
    return name;
}

double AccessibilityBus::value(const Accessible& object) const {
    return propertyOf(*bus_, object.service, object.path, QStringLiteral("org.a11y.atspi.Value"),
                      QStringLiteral("CurrentValue"))
        .toDouble();
}

}  // namespace quillmere::support
