#include "Quillmere/Platform/Linux/Desktop/StatusNotifierHost.h"

#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <QAbstractNativeEventFilter>
#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QTimer>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

// Names of the StatusNotifier protocol's watcher.
const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString watcherInterface = QStringLiteral("org.kde.StatusNotifierWatcher");

// Adds to what Qt has selected on the root window; replacing it would deafen Qt.
void selectStructureEvents(const QtX11& x11) {
    auto* connection = x11.connection();
    const auto cookie = xcb_get_window_attributes(connection, x11.root());
    const std::unique_ptr<xcb_get_window_attributes_reply_t, decltype(&std::free)> attributes(
        xcb_get_window_attributes_reply(connection, cookie, nullptr), &std::free);
    if (!attributes) return;
    const std::uint32_t mask = attributes->your_event_mask | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, x11.root(), XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);
}

}  // namespace

/// Waits for the MANAGER message that a tray sends to the root window when it
/// takes the tray selection.
class StatusNotifierHost::SelectionFilter : public QAbstractNativeEventFilter {
public:
    SelectionFilter(xcb_atom_t manager, xcb_atom_t selection, std::function<void()> onOwned)
        : manager_(manager), selection_(selection), onOwned_(std::move(onOwned)) {
        QCoreApplication::instance()->installNativeEventFilter(this);
    }

    bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* /*result*/) override {
        if (eventType != "xcb_generic_event_t") return false;
        const auto* event = static_cast<const xcb_generic_event_t*>(message);
        constexpr std::uint8_t typeMask = 0x7f;  // the top bit marks a sent event
        if ((event->response_type & typeMask) != XCB_CLIENT_MESSAGE) return false;
        const auto* client = static_cast<const xcb_client_message_event_t*>(message);
        if (client->type == manager_ && client->data.data32[1] == selection_) onOwned_();
        return false;
    }

private:
    xcb_atom_t manager_;
    xcb_atom_t selection_;
    std::function<void()> onOwned_;
};

StatusNotifierHost::StatusNotifierHost() : x11_(QtX11::current()) {
    watchSelection();
    if (!isAvailable_) watchBus();
}

StatusNotifierHost::~StatusNotifierHost() = default;

bool StatusNotifierHost::tintsSymbolicIcons() const {
    // As XDG_CURRENT_DESKTOP has them. Not LXQt, nor the bars of wlroots'
    // compositors: they draw the file as it is.
    constexpr std::array<std::string_view, 4> tinting{"GNOME", "KDE", "X-Cinnamon", "XFCE"};
    return std::ranges::any_of(LinuxSession::current().desktops, [&](const std::string& desktop) {
        return std::ranges::find(tinting, desktop) != tinting.end();
    });
}

void StatusNotifierHost::watchBus() {
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(watcherService, watcherPath, watcherInterface, QStringLiteral("StatusNotifierHostRegistered"), this,
                SLOT(becomeAvailable()));
    watcher_ = new QDBusServiceWatcher(watcherService, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher_, &QDBusServiceWatcher::serviceRegistered, this, &StatusNotifierHost::askWatcher);
    askWatcher();
}

void StatusNotifierHost::askWatcher() {
    auto message = QDBusMessage::createMethodCall(
        watcherService, watcherPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << watcherInterface << QStringLiteral("IsStatusNotifierHostRegistered");
    // A desktop that has no tray should not be made to start one.
    message.setAutoStartService(false);
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *finished;
        if (!reply.isError() && reply.value().variant().toBool()) becomeAvailable();
    });
}

void StatusNotifierHost::watchSelection() {
    if (!x11_) return;
    const auto selection = x11_->screenSelection("_NET_SYSTEM_TRAY_S");
    // Listening comes before asking: a tray that starts in between is seen by one of both.
    selectStructureEvents(*x11_);
    selectionFilter_ = std::make_unique<SelectionFilter>(x11_->atom("MANAGER"), selection, [this] {
        // Not from within Qt's handling of the very event: the icon is made on a quiet queue.
        QTimer::singleShot(0, this, &StatusNotifierHost::becomeAvailable);
    });
    if (x11_->isOwned(selection)) becomeAvailable();
}

void StatusNotifierHost::becomeAvailable() {
    if (std::exchange(isAvailable_, true)) return;
    selectionFilter_.reset();
    delete std::exchange(watcher_, nullptr);
    emit becameAvailable();
}

}  // namespace quillmere
