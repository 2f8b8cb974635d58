#pragma once

#include "Quillmere/Platform/Qt/QtWorkspace.h"

namespace quillmere {

/// Qt's, and what its windows lack here.
class MacWorkspace final : public QtWorkspace {
public:
    void blendTitleBar(QWidget& window, const QColor& light, const QColor& dark) override;
    void bringToFront(QWidget& window) override;
};

}  // namespace quillmere
