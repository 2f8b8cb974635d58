#include "Tests/Desktop/GnomeExtensionClient.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QMap>

// The forms of the interface's values on the bus.
struct GnomeSource {
    QString type;
    QString id;
};
struct GnomeListedSource {
    QString type;
    QString id;
    QString name;
    QString language;
};
struct GnomeGroup {
    QString token;
    QString accelerator;
    QList<GnomeSource> sources;
};
Q_DECLARE_METATYPE(GnomeSource)
Q_DECLARE_METATYPE(GnomeListedSource)
Q_DECLARE_METATYPE(GnomeGroup)

static QDBusArgument& operator<<(QDBusArgument& argument, const GnomeSource& source) {
    argument.beginStructure();
    argument << source.type << source.id;
    argument.endStructure();
    return argument;
}

static void operator>>(const QDBusArgument& argument, GnomeSource& source) {
    argument.beginStructure();
    argument >> source.type >> source.id;
    argument.endStructure();
}

static QDBusArgument& operator<<(QDBusArgument& argument, const GnomeListedSource& source) {
    argument.beginStructure();
    argument << source.type << source.id << source.name << source.language;
    argument.endStructure();
    return argument;
}

static void operator>>(const QDBusArgument& argument, GnomeListedSource& source) {
    argument.beginStructure();
    argument >> source.type >> source.id >> source.name >> source.language;
    argument.endStructure();
}

static QDBusArgument& operator<<(QDBusArgument& argument, const GnomeGroup& group) {
    argument.beginStructure();
    argument << group.token << group.accelerator << group.sources;
    argument.endStructure();
    return argument;
}

static void operator>>(const QDBusArgument& argument, GnomeGroup& group) {
    argument.beginStructure();
    argument >> group.token >> group.accelerator >> group.sources;
    argument.endStructure();
}

namespace quillmere::support {

namespace {

const QString path = QStringLiteral("/org/quillmere/GnomeExtension");
const QString interface = QStringLiteral("org.quillmere.GnomeExtension1");

GnomeSource parts(const std::string& identifier) {
    const QString text = QString::fromStdString(identifier);
    return {.type = text.section(':', 0, 0), .id = text.section(':', 1)};
}

QList<GnomeListedSource> listOf(const QDBusMessage& reply) {
    return qdbus_cast<QList<GnomeListedSource>>(reply.arguments().value(0));
}

}  // namespace

GnomeExtensionClient::GnomeExtensionClient(const QDBusConnection& bus) : bus_(bus) {
    qDBusRegisterMetaType<GnomeSource>();
    qDBusRegisterMetaType<QList<GnomeSource>>();
    qDBusRegisterMetaType<GnomeListedSource>();
    qDBusRegisterMetaType<QList<GnomeListedSource>>();
    qDBusRegisterMetaType<GnomeGroup>();
    qDBusRegisterMetaType<QList<GnomeGroup>>();
    qDBusRegisterMetaType<QMap<QString, QString>>();
    const auto hear = [this](const char* signal, const char* slot) {
        bus_.connect(service, path, interface, QString::fromLatin1(signal), this, slot);
    };
    hear("Switched", SLOT(noteSwitch(QString, uint)));
    hear("Pressed", SLOT(notePress(QString)));
    hear("CurrentChanged", SLOT(noteCurrent(uint)));
    hear("ListChanged", SLOT(noteList()));
    hear("IndicatorChose", SLOT(noteChoice(QString)));
}

void GnomeExtensionClient::takeName() {
    if (!bus_.registerService(programName)) throw SupportError("somebody has the program's name");
}

void GnomeExtensionClient::leaveName() {
    bus_.unregisterService(programName);
}

QDBusMessage GnomeExtensionClient::call(const char* method, const QVariantList& arguments) const {
    return callMethod(bus_, service, path, interface, QString::fromLatin1(method), arguments);
}

std::vector<std::string> GnomeExtensionClient::sources() const {
    std::vector<std::string> result;
    for (const GnomeListedSource& source : listOf(call("List")))
        result.push_back((source.type + ':' + source.id).toStdString());
    return result;
}

std::vector<std::string> GnomeExtensionClient::descriptions() const {
    std::vector<std::string> result;
    for (const GnomeListedSource& source : listOf(call("List")))
        result.push_back((source.name + " (" + source.language + ')').toStdString());
    return result;
}

unsigned int GnomeExtensionClient::current() const {
    return call("Current").arguments().value(0).toUInt();
}

bool GnomeExtensionClient::activate(const std::string& source) const {
    const auto [type, id] = parts(source);
    return call("Activate", {type, id}).arguments().value(0).toBool();
}

std::vector<std::string> GnomeExtensionClient::arm(const std::vector<ArmedGroup>& groups) const {
    QList<GnomeGroup> table;
    for (const ArmedGroup& group : groups) {
        QList<GnomeSource> sources;
        for (const std::string& source : group.sources)
            sources.push_back(parts(source));
        table.push_back({.token = QString::fromStdString(group.token),
                         .accelerator = QString::fromStdString(group.accelerator),
                         .sources = sources});
    }
    const QDBusMessage reply = call("Arm", {QVariant::fromValue(table)});
    if (reply.type() == QDBusMessage::ErrorMessage) throw SupportError(reply.errorMessage().toStdString());
    std::vector<std::string> refused;
    for (const QString& token : reply.arguments().value(0).toStringList())
        refused.push_back(token.toStdString());
    return refused;
}

void GnomeExtensionClient::showIndicator(bool isShown, bool isActive) const {
    const QMap<QString, QString> texts{
        {"active", "Active"}, {"settings", QString::fromUtf8("Settings…")}, {"quit", "Quit Quillmere"}};
    call("ShowIndicator", {isShown, isActive, QVariant::fromValue(texts)});
}

void GnomeExtensionClient::noteSwitch(const QString& token, unsigned int index) {
    switches_.push_back({.token = token.toStdString(), .index = index});
}

void GnomeExtensionClient::notePress(const QString& token) {
    presses_.push_back(token.toStdString());
}

void GnomeExtensionClient::noteCurrent(unsigned int index) {
    currents_.push_back(index);
}

void GnomeExtensionClient::noteList() {
    ++listChanges_;
}

void GnomeExtensionClient::noteChoice(const QString& what) {
    choices_.push_back(what.toStdString());
}

}  // namespace quillmere::support
