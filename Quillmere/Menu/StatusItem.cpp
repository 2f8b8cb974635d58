#include "Quillmere/Menu/StatusItem.h"

#include "Quillmere/Controls/WidgetPalette.h"
#include "Quillmere/Icons/StatusIcon.h"

#include <QAction>
#include <QCursor>
#include <QGuiApplication>
#include <QKeySequence>
#include <QScreen>
#include <QShortcut>
#include <QSystemTrayIcon>

#include <utility>

namespace quillmere {

namespace {

// The trays of dark desktops are dark, those of light ones light.
QColor iconColor(bool isDark) {
    return isDark ? QColor(255, 255, 255) : QColor(0, 0, 0);
}

// Never over the icon: the click's release would then choose an entry.
QPoint besideIcon(const QRect& icon, const QSize& menu) {
    const QScreen* screen = QGuiApplication::screenAt(icon.center());
    const bool isLow = screen && icon.center().y() > screen->geometry().center().y();
    return isLow ? icon.topLeft() - QPoint(0, menu.height()) : icon.bottomLeft() + QPoint(0, 1);
}

QString toolTip(const ConfigModel& model) {
    QString name = QStringLiteral("Quillmere");
    if (!model.waitsForFnInVain()) return name;
    return name + QStringLiteral("\nThis keyboard does not tell of Fn: choose another shortcut in the settings");
}

}  // namespace

StatusItem::StatusItem(ConfigModel& model, Appearance& appearance, TrayHost& trayHost, Actions actions)
    : model_(model), appearance_(appearance), trayHost_(trayHost), actions_(std::move(actions)) {
    buildMenu();
    subscription_ = connect(&model_, &ConfigModel::configChanged, this, &StatusItem::updateIcon);
    connect(&model_, &ConfigModel::mayHearFnChanged, this, &StatusItem::updateIcon);
    connect(&appearance_, &Appearance::changed, this, &StatusItem::updateIcon);
    connect(&trayHost_, &TrayHost::becameAvailable, this, &StatusItem::showInTray);
    updateIcon();
    if (trayHost_.isAvailable()) showInTray();
}

StatusItem::~StatusItem() = default;

void StatusItem::buildMenu() {
    menu_ = std::make_unique<QMenu>();
    activeItem_ = menu_->addAction(QStringLiteral("Active"));
    activeItem_->setObjectName(QStringLiteral("active"));
    activeItem_->setCheckable(true);
    connect(activeItem_, &QAction::triggered, this, [this] { actions_.toggleActive(); });

    auto* settings = menu_->addAction(QStringLiteral("Settings…"));
    settings->setObjectName(QStringLiteral("settings"));
    connect(settings, &QAction::triggered, this, [this] { actions_.openSettings(); });
    // Qt's CTRL is the Command key on macOS.
    addKeyEquivalent(*settings, Qt::CTRL | Qt::Key_Comma);

    menu_->addSeparator();
    auto* quit = menu_->addAction(QStringLiteral("Quit Quillmere"));
    quit->setObjectName(QStringLiteral("quit"));
    // With another role, or one that is guessed from the text, macOS would have
    // the entry in the menu of the application, which is never seen.
    for (auto* const entry : {settings, quit})
        entry->setMenuRole(QAction::NoRole);
    connect(quit, &QAction::triggered, this, [this] { actions_.quit(); });
    addKeyEquivalent(*quit, Qt::CTRL | Qt::Key_Q);

    connect(menu_.get(), &QMenu::aboutToShow, this, &StatusItem::menuWillOpen);
    // Some tray hosts read the menu before they announce that it opens.
    menuWillOpen();
}

// The item's own shortcut acts in windows only, not in the open menu.
void StatusItem::addKeyEquivalent(QAction& item, const QKeySequence& keys) {
    item.setShortcut(keys);
    auto* const inMenu = new QShortcut(keys, menu_.get());
    connect(inMenu, &QShortcut::activated, &item, [this, &item] {
        menu_->close();
        item.trigger();
    });
}

void StatusItem::lendKeyEquivalents(QWidget& window) const {
    window.addAction(menu_->menuAction());
}

void StatusItem::menuWillOpen() {
    activeItem_->setChecked(model_.config().active);
    menu_->setPalette(widgetPalette());
}

void StatusItem::showInTray() {
    if (icon_) return;
    icon_ = std::make_unique<QSystemTrayIcon>();
    icon_->setContextMenu(menu_.get());
    if (!trayHost_.isMenuBar()) {
        connect(icon_.get(), &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
            if (reason == QSystemTrayIcon::Trigger) openMenu();
        });
    }
    updateIcon();
    icon_->show();
}

void StatusItem::openMenu() const {
    const QRect place = icon_->geometry();
    // Where the tray keeps the icon's place to itself, the click tells it.
    menu_->popup(place.isValid() ? besideIcon(place, menu_->sizeHint()) : QCursor::pos());
}

void StatusItem::updateIcon() {
    const bool dimmed = !model_.config().active;
    trayHost_.showMenu(*menu_, !dimmed);
    if (!icon_) return;
    icon_->setToolTip(toolTip(model_));
    icon_->setIcon(trayHost_.isMenuBar()
                       ? StatusIcon::makeTemplate(dimmed)
                       : StatusIcon::make(iconColor(appearance_.isDark()), dimmed, trayHost_.tintsSymbolicIcons()));
}

}  // namespace quillmere
