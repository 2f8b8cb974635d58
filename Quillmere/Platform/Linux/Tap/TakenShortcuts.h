#pragma once

#include "QuillmereCore/Shortcut.h"

#include <QObject>

#include <vector>

namespace quillmere {

/// The shortcuts of interest that do nothing at this moment, since a desktop
/// that is the tap has their combinations for something else. Main thread only.
class TakenShortcuts final : public QObject {
    Q_OBJECT
public:
    const std::vector<Shortcut>& all() const { return all_; }
    void set(std::vector<Shortcut> shortcuts);

signals:
    /// They are others now.
    void changed();

private:
    std::vector<Shortcut> all_;
};

}  // namespace quillmere
