#include "Quillmere/Platform/Linux/Tap/ShortcutConflicts.h"

#include <QStringList>

namespace quillmere {

ShortcutConflicts::ShortcutConflicts(const TakenShortcuts& taken, const QString& text) : taken_(taken), text_(text) {
    connect(&taken, &TakenShortcuts::changed, this, &Offer::changed);
}

QString ShortcutConflicts::text() const {
    QStringList names;
    for (const Shortcut& shortcut : taken_.all())
        names.push_back(QString::fromStdString(shortcut.displayString()));
    return text_.arg(names.join(QStringLiteral(", ")));
}

}  // namespace quillmere
