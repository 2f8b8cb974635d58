#pragma once

#include "Quillmere/Platform/EventTap.h"

#include <QObject>

namespace quillmere {

/// The keys that are typed into this program's own windows, as a tap tells of
/// them: what there is to record a shortcut from where no tap sees every key.
/// What the desktop keeps for itself never gets here. Main thread only.
class FocusedKeys final : public QObject {
public:
    /// Tells from now on, before any widget gets a key. `callback` must outlive
    /// this; what it swallows, no widget gets.
    explicit FocusedKeys(const EventTap::Callback& callback);

    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    const EventTap::Callback& callback_;
};

}  // namespace quillmere
