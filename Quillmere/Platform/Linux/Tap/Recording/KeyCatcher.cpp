#include "Quillmere/Platform/Linux/Tap/Recording/KeyCatcher.h"

#include "Quillmere/Platform/Linux/Tap/Recording/TypedKey.h"
#include "Quillmere/Platform/Linux/Wayland/ShortcutsInhibitProtocol.h"

#include <utility>

namespace quillmere {

namespace {

constexpr QSize onePoint(1, 1);

// KWin gives it the keyboard, and animates nothing.
constexpr const char* purpose = "utility";

}  // namespace

KeyCatcher::KeyCatcher(const EventTap::Callback& callback)
    : callback_(callback), connection_(WaylandConnection::open()) {
    if (!connection_) return;
    connection_->onReady = [this] { take(); };
    limit_.setSingleShot(true);
    QObject::connect(&limit_, &QTimer::timeout, &limit_, [this] { giveBack(); });
    limit_.start(longest);
}

KeyCatcher::~KeyCatcher() {
    giveBack();
}

void KeyCatcher::take() {
    wl_seat* const seat = connection_->keyboardSeat();
    wl_proxy* const manager = connection_->shortcutsInhibit();
    if (!connection_->isUsable() || seat == nullptr || manager == nullptr) return;
    picture_ = std::make_unique<WaylandPicture>(connection_->shm(), onePoint);
    if (!picture_->isUsable()) return;
    picture_->image().fill(Qt::transparent);
    keyboard_ =
        std::make_unique<WaylandKeyboard>(seat, [this](unsigned int code, bool isPress) { note(code, isPress); });
    surface_ = std::make_unique<LayerShellSurface>(*connection_, purpose, onePoint);
    inhibition_ = shortcutsinhibit::inhibit(manager, surface_->surface(), seat);
    surface_->onPlaced = [this] {
        if (!picture_->isBusy()) surface_->show(*picture_, 1);
        connection_->flush();
    };
    surface_->takeKeyboard();
    connection_->flush();
}

void KeyCatcher::giveBack() {
    if (inhibition_ != nullptr) shortcutsinhibit::release(std::exchange(inhibition_, nullptr));
    keyboard_.reset();
    surface_.reset();
    picture_.reset();
    if (connection_) connection_->flush();
}

void KeyCatcher::note(unsigned int code, bool isPress) const {
    // Nobody else has got it, whatever the answer is.
    if (const auto fields = typedKey(code, isPress, keyboard_->flags())) callback_(*fields);
}

}  // namespace quillmere
