#include "Quillmere/Platform/Linux/Sources/Ibus/IbusConnection.h"

#include "Quillmere/Platform/Linux/Sources/Ibus/IbusAddress.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QFileInfo>
#include <QString>

#include <limits>
#include <utility>

namespace quillmere {

namespace {

const QString busName = QStringLiteral("org.freedesktop.DBus");

}  // namespace

IbusConnection::~IbusConnection() {
    close();
}

/// A switch asks for the daemon several times, and every look opens files.
void IbusConnection::look() {
    const auto now = std::chrono::steady_clock::now();
    if (bus_ || now < nextLook_) return;
    nextLook_ = now + std::chrono::seconds(1);
    lookNow();
}

void IbusConnection::lookNow() {
    if (bus_) return;
    if (!watcher_) watch();
    const auto note = ibusAddress::find();
    if (!note || !ibusAddress::isListening(*note)) return;
    open(note->address);
}

/// The daemon writes its note anew at every start. Where its folder does not
/// exist the folders above are not watched in its place: others write there all
/// the time.
void IbusConnection::watch() {
    for (const std::string& file : ibusAddress::files()) {
        const QFileInfo note(QString::fromStdString(file));
        if (!note.dir().exists()) continue;
        if (!watcher_) {
            watcher_ = std::make_unique<QFileSystemWatcher>();
            connect(watcher_.get(), &QFileSystemWatcher::fileChanged, this, &IbusConnection::lookAgain);
            connect(watcher_.get(), &QFileSystemWatcher::directoryChanged, this, &IbusConnection::lookAgain);
        }
        // What is watched already is left out, with a warning only for what is not there.
        watcher_->addPath(note.path());
        if (note.exists()) watcher_->addPath(note.filePath());
    }
}

void IbusConnection::lookAgain() {
    // A note that is replaced is another file.
    watch();
    const auto note = ibusAddress::find();
    // Read between the two steps of writing it, it is none.
    if (bus_ && note && note->address != address_) replace();
    lookNow();
}

/// Opening does not wait for the daemon's answer, as a bus's own connection does,
/// whose greeting is part of it.
void IbusConnection::open(const std::string& address) {
    static int count = 0;
    const QString name = QStringLiteral("ibus-%1").arg(++count);
    const QDBusConnection bus = QDBusConnection::connectToPeer(QString::fromStdString(address), name);
    if (!bus.isConnected()) {
        QDBusConnection::disconnectFromPeer(name);
        return;
    }
    bus_ = bus;
    address_ = address;
    bus_->connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                  QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SLOT(noteEnd()));
    greet();
}

void IbusConnection::greet() {
    constexpr int withoutEnd = std::numeric_limits<int>::max();
    const QDBusMessage hello = QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName,
                                                              QStringLiteral("Hello"));
    greeting_ = std::make_unique<QDBusPendingCallWatcher>(bus_->asyncCall(hello, withoutEnd));
    connect(greeting_.get(), &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* greeting) {
        if (greeting != greeting_.get()) return;
        // Its own signal: not deleted at once.
        greeting_.release()->deleteLater();
        if (!greeting->isError()) emit greeted();
    });
}

void IbusConnection::close() {
    greeting_.reset();
    if (!bus_) return;
    const QString name = bus_->name();
    bus_.reset();
    QDBusConnection::disconnectFromPeer(name);
}

/// Also of one that has been closed meanwhile, in whose place another may be.
void IbusConnection::noteEnd() {
    if (bus_ && !bus_->isConnected()) replace();
}

void IbusConnection::replace() {
    close();
    emit lost();
    lookNow();
}

}  // namespace quillmere
