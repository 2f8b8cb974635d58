#pragma once

#include <QObject>

namespace quillmere {

/// The system's choice between dark and light. Main thread only.
class Appearance : public QObject {
    Q_OBJECT
public:
    /// True for dark; light when the system states no preference.
    virtual bool isDark() const = 0;

    /// Whether the system has a glass material to draw the plate with.
    virtual bool hasGlass() const = 0;

signals:
    /// The choice changed; `isDark` already tells the new one.
    void changed();
};

}  // namespace quillmere
