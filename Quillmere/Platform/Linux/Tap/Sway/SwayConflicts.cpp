#include "Quillmere/Platform/Linux/Tap/Sway/SwayConflicts.h"

#include <QStringList>

namespace quillmere {

SwayConflicts::SwayConflicts(const SwayEventTap& tap) : tap_(tap) {
    connect(&tap, &SwayEventTap::takenChanged, this, &Offer::changed);
}

QString SwayConflicts::text() const {
    QStringList names;
    for (const Shortcut& shortcut : tap_.taken())
        names.push_back(QString::fromStdString(shortcut.displayString()));
    return QStringLiteral(
               "sway's own configuration has %1, so it does not switch here. Choose another shortcut, or "
               "take it out there.")
        .arg(names.join(QStringLiteral(", ")));
}

}  // namespace quillmere
