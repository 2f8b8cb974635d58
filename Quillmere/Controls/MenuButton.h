#pragma once

#include "Quillmere/Controls/TextButton.h"

#include <functional>

class QMenu;

namespace quillmere {

/// A button that opens a menu under itself, made afresh each time. Its title
/// has to carry the arrow, if one is wanted.
class MenuButton : public TextButton {
    Q_OBJECT
public:
    /// `fill` puts the entries into the new, empty menu.
    MenuButton(const QString& title, std::function<void(QMenu&)> fill, QWidget* parent = nullptr);

    /// Opens the menu. It closes by itself and is then deleted.
    void openMenu();

protected:
    Colors colors() const override;

private:
    std::function<void(QMenu&)> fill_;
};

}  // namespace quillmere
