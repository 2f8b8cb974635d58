#include "Quillmere/Platform/Linux/Tap/Kde/KdeGlobalShortcuts.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QList>

#include <chrono>
#include <utility>

namespace quillmere {

/// A combination as it goes over the bus: up to four strokes one after the
/// other, of which only the first is ever used.
struct KdeKeySequence {
    QList<int> strokes;
};

// By these names the bus library finds them.
QDBusArgument& operator<<(QDBusArgument& argument, const KdeKeySequence& sequence) {
    argument.beginStructure();
    argument << sequence.strokes;
    argument.endStructure();
    return argument;
}
void operator>>(const QDBusArgument& argument, KdeKeySequence& sequence) {
    argument.beginStructure();
    argument >> sequence.strokes;
    argument.endStructure();
}

namespace {

const QString service = QStringLiteral("org.kde.kglobalaccel");
const QString component = QStringLiteral("quillmere");
const QString questionForOwners = QStringLiteral("getGlobalShortcutsByKey");
const QString componentPath = QStringLiteral("/component/quillmere");
const QString componentInterface = QStringLiteral("org.kde.kglobalaccel.Component");

// KGlobalAccelD::SetShortcutFlag: now, and whatever the user's file says.
constexpr unsigned int setPresent = 2;
constexpr unsigned int noAutoloading = 4;

// Nobody waits longer for a program to end.
constexpr std::chrono::milliseconds patienceAtTheEnd{400};
constexpr std::chrono::milliseconds patienceOfQuestions{1000};

QDBusMessage call(const QString& method, const QVariantList& arguments) {
    QDBusMessage message = QDBusMessage::createMethodCall(service, QStringLiteral("/kglobalaccel"),
                                                          QStringLiteral("org.kde.KGlobalAccel"), method);
    message.setArguments(arguments);
    message.setAutoStartService(false);
    return message;
}

/// Who has a combination.
struct Owner {
    QString program;
    QString label;  ///< the program's, as the desktop shows it
};

/// Of an answer to the question for them; absent when it is none.
std::optional<std::vector<Owner>> ownersIn(const QDBusMessage& answer) {
    const auto list = answer.arguments().value(0).value<QDBusArgument>();
    if (list.currentSignature() != QLatin1String("a(ssssssaiai)")) return std::nullopt;
    std::vector<Owner> owners;
    list.beginArray();
    while (!list.atEnd()) {
        QString shortcut;
        QString shortcutLabel;
        Owner owner;
        list.beginStructure();
        list >> shortcut >> shortcutLabel >> owner.program >> owner.label;
        list.endStructure();
        owners.push_back(std::move(owner));
    }
    list.endArray();
    return owners;
}

/// Who a shortcut is to the desktop: program and shortcut, each with its label.
QStringList identity(const QString& name, const QString& label) {
    return {component, name, QStringLiteral("Quillmere"), label};
}

}  // namespace

KdeGlobalShortcuts::KdeGlobalShortcuts(const QDBusConnection& bus) : bus_(bus) {
    qDBusRegisterMetaType<KdeKeySequence>();
    qDBusRegisterMetaType<QList<KdeKeySequence>>();
    listen();
    askForLeftovers();
}

KdeGlobalShortcuts::~KdeGlobalShortcuts() {
    if (set_.empty()) return;
    set({});
    // Answered in the order of asking.
    bus_.call(call(QStringLiteral("allMainComponents"), {}), QDBus::Block, static_cast<int>(patienceAtTheEnd.count()));
}

bool KdeGlobalShortcuts::areThere(const QDBusConnection& bus) {
    return bus.isConnected() && bus.interface()->isServiceRegistered(service).value();
}

std::optional<QString> KdeGlobalShortcuts::holder(const QDBusConnection& bus, int key) {
    const auto owners =
        ownersIn(bus.call(call(questionForOwners, {key}), QDBus::Block, static_cast<int>(patienceOfQuestions.count())));
    if (!owners) return std::nullopt;
    return owners->empty() ? QString() : owners->front().label;
}

void KdeGlobalShortcuts::listen() {
    bus_.connect(service, componentPath, componentInterface, QStringLiteral("globalShortcutPressed"), this,
                 SLOT(notePressed(QString, QString, qlonglong)));
    bus_.connect(service, componentPath, componentInterface, QStringLiteral("globalShortcutReleased"), this,
                 SLOT(noteReleased(QString, QString, qlonglong)));
}

void KdeGlobalShortcuts::askForLeftovers() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(service, componentPath, componentInterface, QStringLiteral("shortcutNames"));
    question.setAutoStartService(false);
    // An error says that nothing is left.
    bus_.callWithCallback(question, this, SLOT(noteLeftovers(QDBusMessage)));
}

void KdeGlobalShortcuts::noteLeftovers(const QDBusMessage& names) {
    const QStringList all = names.arguments().value(0).toStringList();
    for (const QString& name : all)
        if (!set_.contains(name)) remove(name);
}

void KdeGlobalShortcuts::set(const WantedByName& wanted) {
    const WantedByName before = std::exchange(set_, wanted);
    for (const auto& [name, former] : before)
        if (!wanted.contains(name)) remove(name);
    for (const auto& [name, one] : wanted) {
        const auto former = before.find(name);
        if (former == before.end() || former->second != one) put(name, one);
    }
}

void KdeGlobalShortcuts::setAgain() {
    for (const auto& [name, one] : set_)
        put(name, one);
}

void KdeGlobalShortcuts::put(const QString& name, const Wanted& wanted) {
    QList<KdeKeySequence> sequences;
    for (const int key : wanted.keys)
        sequences.push_back({{key, 0, 0, 0}});
    const QStringList id = identity(name, wanted.label);
    bus_.send(call(QStringLiteral("doRegister"), {id}));
    // A combination that is somebody else's is left out by the desktop.
    bus_.send(
        call(QStringLiteral("setShortcutKeys"), {id, QVariant::fromValue(sequences), setPresent | noAutoloading}));
    if (!wanted.keys.empty()) askForOwner(name, wanted);
}

/// Newer desktops answer to the setting itself as if all had been given.
void KdeGlobalShortcuts::askForOwner(const QString& name, const Wanted& wanted) {
    const QDBusPendingCall answer = bus_.asyncCall(call(questionForOwners, {wanted.keys.front()}));
    auto* const watcher = new QDBusPendingCallWatcher(answer, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, name, wanted] {
        watcher->deleteLater();
        const auto now = set_.find(name);
        const auto owners = ownersIn(watcher->reply());
        if (!owners || now == set_.end() || now->second != wanted) return;
        // The first one has the keys, should there be several.
        emit refused(name, !owners->empty() && owners->front().program != component);
    });
}

void KdeGlobalShortcuts::remove(const QString& name) {
    bus_.send(call(QStringLiteral("unregister"), {component, name}));
}

void KdeGlobalShortcuts::notePressed(const QString& /*component*/, const QString& name, qlonglong /*time*/) {
    if (set_.contains(name)) emit pressed(name);
}

void KdeGlobalShortcuts::noteReleased(const QString& /*component*/, const QString& name, qlonglong /*time*/) {
    if (set_.contains(name)) emit released(name);
}

}  // namespace quillmere

Q_DECLARE_METATYPE(quillmere::KdeKeySequence)
