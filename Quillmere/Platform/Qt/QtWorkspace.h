#pragma once

#include "Quillmere/Platform/Workspace.h"

namespace quillmere {

/// The desktop through Qt: the default handlers, the bell, the user's locale.
class QtWorkspace : public Workspace {
public:
    bool open(const QUrl& url) override;
    void beep() override;
    std::vector<std::string> preferredLanguages() const override;
    void blendTitleBar(QWidget& window, const QColor& light, const QColor& dark) override;
    void bringToFront(QWidget& window) override;
};

}  // namespace quillmere
