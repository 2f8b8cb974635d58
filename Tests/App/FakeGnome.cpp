#include "Tests/App/FakeGnome.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

const QString shellName = QStringLiteral("org.gnome.Shell");
const QString extensionName = QStringLiteral("org.quillmere.GnomeExtension");
const QString path = QStringLiteral("/org/quillmere/GnomeExtension");

QString lineOf(const QDBusArgument& sources) {
    QStringList texts;
    sources.beginArray();
    while (!sources.atEnd()) {
        QString type;
        QString id;
        sources.beginStructure();
        sources >> type >> id;
        sources.endStructure();
        texts.push_back(type + QLatin1Char(' ') + id);
    }
    sources.endArray();
    return texts.join(QStringLiteral(", "));
}

}  // namespace

// By these names the bus library finds them.
QDBusArgument& operator<<(QDBusArgument& argument, const FakeGnome::Source& source) {
    argument.beginStructure();
    argument << source.type << source.id << source.name << source.language;
    argument.endStructure();
    return argument;
}
void operator>>(const QDBusArgument& argument, FakeGnome::Source& source) {
    argument.beginStructure();
    argument >> source.type >> source.id >> source.name >> source.language;
    argument.endStructure();
}

FakeGnome::FakeGnome(const std::string& busAddress)
    : bus_(QDBusConnection::connectToBus(QString::fromStdString(busAddress), QStringLiteral("played GNOME"))) {
    qDBusRegisterMetaType<Source>();
    qDBusRegisterMetaType<QList<Source>>();
    moveToThread(&thread_);
    thread_.start();
    bus_.registerVirtualObject(path, this);
}

FakeGnome::~FakeGnome() {
    bus_.unregisterObject(path);
    QDBusConnection::disconnectFromBus(bus_.name());
    thread_.quit();
    thread_.wait();
}

void FakeGnome::startShell() {
    bus_.registerService(shellName);
}

void FakeGnome::endShell() {
    bus_.unregisterService(shellName);
}

void FakeGnome::enableExtension() {
    bus_.registerService(extensionName);
}

void FakeGnome::disableExtension() {
    bus_.unregisterService(extensionName);
    const std::lock_guard lock(mutex_);
    tokens_.clear();
    armed_.clear();
    indicator_.clear();
}

void FakeGnome::setVersion(unsigned int version) {
    const std::lock_guard lock(mutex_);
    version_ = version;
}

void FakeGnome::setSources(const std::vector<Source>& sources) {
    const std::lock_guard lock(mutex_);
    sources_ = sources;
}

void FakeGnome::setCurrent(unsigned int index) {
    const std::lock_guard lock(mutex_);
    current_ = index;
}

unsigned int FakeGnome::current() const {
    const std::lock_guard lock(mutex_);
    return current_;
}

void FakeGnome::setIgnores(bool ignores) {
    const std::lock_guard lock(mutex_);
    ignores_ = ignores;
}

void FakeGnome::standStill() {
    const std::lock_guard lock(mutex_);
    standsStill_ = true;
}

void FakeGnome::goOn() {
    const std::lock_guard lock(mutex_);
    standsStill_ = false;
    for (const QDBusMessage& message : std::exchange(unanswered_, {}))
        answer(message);
}

void FakeGnome::setTaken(const QStringList& accelerators) {
    const std::lock_guard lock(mutex_);
    taken_ = accelerators;
}

QStringList FakeGnome::armed() const {
    const std::lock_guard lock(mutex_);
    return armed_;
}

void FakeGnome::emitSwitched(int shortcut, unsigned int index, const QString& receiver) {
    const std::lock_guard lock(mutex_);
    emitTo(receiver, QStringLiteral("Switched"), {tokens_.value(shortcut), index});
}

void FakeGnome::emitPressed(int shortcut, const QString& receiver) {
    const std::lock_guard lock(mutex_);
    emitTo(receiver, QStringLiteral("Pressed"), {tokens_.value(shortcut)});
}

QString FakeGnome::indicator() const {
    const std::lock_guard lock(mutex_);
    return indicator_;
}

void FakeGnome::emitChose(const QString& entry, const QString& receiver) {
    emitTo(receiver, QStringLiteral("IndicatorChose"), {entry});
}

void FakeGnome::emitTo(const QString& receiver, const QString& signal, const QVariantList& arguments) {
    QDBusMessage message =
        QDBusMessage::createTargetedSignal(receiver, path, QStringLiteral("org.quillmere.GnomeExtension1"), signal);
    message.setArguments(arguments);
    bus_.send(message);
}

bool FakeGnome::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
    const std::lock_guard lock(mutex_);
    if (standsStill_)
        unanswered_.push_back(message);
    else
        answer(message);
    return true;
}

QString FakeGnome::introspect(const QString& /*path*/) const {
    return {};
}

void FakeGnome::answer(const QDBusMessage& message) {
    QDBusMessage reply = message.createReply();
    const QString method = message.member();
    const QVariantList arguments = message.arguments();
    if (method == QLatin1String("Get")) reply << QVariant::fromValue(QDBusVariant(version_));
    if (method == QLatin1String("Current")) reply << current_;
    if (method == QLatin1String("List")) reply << QVariant::fromValue(QList<Source>(sources_.begin(), sources_.end()));
    if (method == QLatin1String("Activate"))
        reply << activate(arguments.value(0).toString(), arguments.value(1).toString());
    if (method == QLatin1String("Arm")) reply << arm(message);
    if (method == QLatin1String("ShowIndicator")) showIndicator(arguments);
    bus_.send(reply);
}

void FakeGnome::showIndicator(const QVariantList& arguments) {
    const auto texts = qdbus_cast<QMap<QString, QString>>(arguments.value(2));
    QStringList entries;
    for (const auto& [entry, text] : texts.asKeyValueRange())
        entries.push_back(entry + QStringLiteral(": ") + text);
    indicator_ = arguments.value(1).toBool() ? QString() : QStringLiteral("dimmed: ");
    indicator_ += entries.join(QStringLiteral(", "));
    if (!arguments.value(0).toBool()) indicator_.clear();
}

bool FakeGnome::activate(const QString& type, const QString& id) {
    const auto found =
        std::ranges::find_if(sources_, [&](const Source& source) { return source.type == type && source.id == id; });
    if (found == sources_.end()) return false;
    if (!ignores_) current_ = static_cast<unsigned int>(found - sources_.begin());
    return true;
}

QStringList FakeGnome::arm(const QDBusMessage& message) {
    ++armCount_;
    tokens_.clear();
    armed_.clear();
    const auto table = message.arguments().value(0).value<QDBusArgument>();
    QStringList refused;
    if (table.currentSignature() != QLatin1String("a(ssa(ss))")) return refused;
    table.beginArray();
    while (!table.atEnd()) {
        QString token;
        QString accelerator;
        table.beginStructure();
        table >> token >> accelerator;
        armed_.push_back(accelerator + QStringLiteral(": ") + lineOf(table));
        table.endStructure();
        tokens_.push_back(token);
        if (taken_.contains(accelerator)) refused.push_back(token);
    }
    table.endArray();
    return refused;
}

}  // namespace quillmere
