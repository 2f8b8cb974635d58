#include "Quillmere/Platform/Linux/Tap/Service/ServicePermissionRequest.h"

#include "TapService/KeyTapNames.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusReply>
#include <QDir>

#include <chrono>
#include <utility>

namespace quillmere {

namespace {

// Longer than the service itself lets the dialog stand.
constexpr std::chrono::milliseconds longestDialog = std::chrono::minutes(11);

// The bus itself answers at once.
constexpr std::chrono::milliseconds longestQuestion{400};

/// Whether the error leaves the user something to do: everything but a dialog
/// that is there already, or that nobody has answered.
bool meansNoService(const QDBusError& error) {
    return error.type() != QDBusError::NoReply && error.name() != QLatin1String(tap::KeyTapNames::Error::busy);
}

}  // namespace

ServicePermissionRequest::ServicePermissionRequest(Workspace& workspace, QUrl documentation, const QDBusConnection& bus)
    : workspace_(workspace), documentation_(std::move(documentation)), bus_(bus) {}

QUrl ServicePermissionRequest::standardDocumentation() {
    const QString page = QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillmere/TapService.md");
    return QUrl::fromLocalFile(QDir::cleanPath(page));
}

QString ServicePermissionRequest::directions() const {
    const QString purpose = QStringLiteral(
        " The service tells Quillmere of your shortcut keys, Fn among them, and of other keys only while you record"
        " a shortcut.");
    if (isInstalled())
        return QStringLiteral("The button asks for an administrator's password, once, to allow the keyboard service.")
               + purpose;
    return QStringLiteral("The button opens the page that says how to install the keyboard service.") + purpose;
}

bool ServicePermissionRequest::isInstalled() const {
    const auto lists = [this](const char* method) {
        const QDBusMessage question = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QString::fromLatin1(method));
        const QDBusReply<QStringList> names =
            bus_.call(question, QDBus::Block, static_cast<int>(longestQuestion.count()));
        return names.value().contains(QLatin1String(tap::KeyTapNames::service));
    };
    return lists("ListActivatableNames") || lists("ListNames");
}

void ServicePermissionRequest::open() {
    // The dialog is there; a second one would only be refused.
    if (question_) return;
    if (!bus_.isConnected()) {
        workspace_.open(documentation_);
        return;
    }
    const QDBusMessage call = QDBusMessage::createMethodCall(tap::KeyTapNames::service, tap::KeyTapNames::path,
                                                             tap::KeyTapNames::interface, "RequestAccess");
    question_ =
        std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call, static_cast<int>(longestDialog.count())));
    connect(question_.get(), &QDBusPendingCallWatcher::finished, this, [this] { answered(); });
}

void ServicePermissionRequest::answered() {
    const QDBusPendingReply<bool> reply = *question_;
    // Not deleted at once: this is its own signal.
    question_.release()->deleteLater();
    if (reply.isError()) {
        if (meansNoService(reply.error())) workspace_.open(documentation_);
    } else if (reply.value() && onGranted) {
        onGranted();
    }
}

}  // namespace quillmere
