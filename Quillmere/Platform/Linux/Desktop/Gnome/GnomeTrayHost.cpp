#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeTrayHost.h"

#include <QAction>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QMap>

#include <algorithm>

namespace quillmere {

namespace {

/// On the bus a dictionary of strings.
using Texts = QMap<QString, QString>;

Texts textsOf(const QMenu& menu) {
    Texts texts;
    for (const QAction* entry : menu.actions())
        if (!entry->objectName().isEmpty()) texts.insert(entry->objectName(), entry->text());
    return texts;
}

}  // namespace

GnomeTrayHost::GnomeTrayHost(const QDBusConnection& bus) : bus_(bus), extension_(bus) {
    qDBusRegisterMetaType<Texts>();
    bus_.connect(GnomeExtension::name, GnomeExtension::path, GnomeExtension::interface,
                 QStringLiteral("IndicatorChose"), this, SLOT(choose(QString)));
    // One that has just come knows nothing.
    connect(&extension_, &GnomeExtension::liveChanged, this, &GnomeTrayHost::send);
    connect(&extension_, &GnomeExtension::liveChanged, this, &TrayHost::placeForMenuChanged);
}

void GnomeTrayHost::showMenu(QMenu& menu, bool isActive) {
    if (menu_ == &menu && isActive_ == isActive) return;
    menu_ = &menu;
    isActive_ = isActive;
    send();
}

void GnomeTrayHost::send() const {
    if (!extension_.isLive() || !menu_) return;
    QDBusMessage call = QDBusMessage::createMethodCall(GnomeExtension::name, GnomeExtension::path,
                                                       GnomeExtension::interface, QStringLiteral("ShowIndicator"));
    call << true << isActive_ << QVariant::fromValue(textsOf(*menu_));
    call.setAutoStartService(false);
    bus_.send(call);
}

void GnomeTrayHost::choose(const QString& entry) {
    if (!menu_) return;
    const QList<QAction*> entries = menu_->actions();
    const auto chosen = std::ranges::find(entries, entry, [](const QAction* each) { return each->objectName(); });
    if (chosen != entries.end() && !entry.isEmpty()) (*chosen)->trigger();
}

}  // namespace quillmere
