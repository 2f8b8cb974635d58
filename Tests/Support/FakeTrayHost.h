#pragma once

#include "Quillmere/Platform/TrayHost.h"

#include <functional>

namespace quillmere {

/// A desktop without a tray until the test brings one up.
class FakeTrayHost : public TrayHost {
public:
    bool isAvailable() const override {
        if (onAsked) onAsked();
        return isAvailable_;
    }

    std::function<void()> onAsked;  ///< whenever an icon's maker asks, before the answer

    bool tintsSymbolicIcons() const override { return isTinting; }
    bool isMenuBar() const override { return menuBar; }

    void showMenu(QMenu& menu, bool isActive) override {
        shownMenu = &menu;
        shownActive = isActive;
    }

    bool hasPlaceForMenu() const override { return hasPlace; }

    bool hasPlace = false;
    QMenu* shownMenu = nullptr;  ///< where there is no tray
    bool shownActive = false;
    bool isTinting = false;
    bool menuBar = false;

    void comeUp() {
        isAvailable_ = true;
        emit becameAvailable();
    }

private:
    bool isAvailable_ = false;
};

}  // namespace quillmere
