#include "Quillmere/Controls/MenuButton.h"

#include "Quillmere/Controls/WidgetPalette.h"

#include <QAccessibleWidget>
#include <QMenu>

namespace quillmere {

namespace {

/// Says that pressing leads to a menu.
class AccessibleMenuButton : public QAccessibleWidget {
public:
    explicit AccessibleMenuButton(MenuButton* button) : QAccessibleWidget(button, QAccessible::ButtonMenu) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.hasPopup = true;
        return state;
    }

    QStringList actionNames() const override {
        return QStringList{showMenuAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString& name) override {
        if (name == showMenuAction() && widget()->isEnabled())
            static_cast<MenuButton*>(widget())->openMenu();
        else
            QAccessibleWidget::doAction(name);
    }
};

QAccessibleInterface* accessibleInterface(const QString&, QObject* object) {
    auto* const button = qobject_cast<MenuButton*>(object);
    return button ? new AccessibleMenuButton(button) : nullptr;
}

}  // namespace

MenuButton::MenuButton(const QString& title, std::function<void(QMenu&)> fill, QWidget* parent)
    : TextButton(title, {.verticalPadding = 4, .horizontalPadding = 10, .radius = 7}, parent), fill_(std::move(fill)) {
    static const bool isInstalled = (QAccessible::installFactory(accessibleInterface), true);
    Q_UNUSED(isInstalled);
    connect(this, &QAbstractButton::pressed, this, &MenuButton::openMenu);
}

void MenuButton::openMenu() {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setFont(textFont(TextStyle::body));
    menu->setPalette(widgetPalette());
    fill_(*menu);
    connect(menu, &QMenu::aboutToHide, this, [this] { setDown(false); });
    menu->popup(mapToGlobal(QPoint(0, height() + 2)));
}

TextButton::Colors MenuButton::colors() const {
    return {Palette::chip(), Palette::border(), labelColor()};
}

}  // namespace quillmere
