#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeShortcutTable.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QList>

namespace quillmere {

/// A source and a shortcut as they go over the bus.
struct GnomeBusSource {
    QString type;
    QString id;
};
struct GnomeBusShortcut {
    QString token;
    QString accelerator;
    QList<GnomeBusSource> sources;
};

// By these names the bus library finds them.
QDBusArgument& operator<<(QDBusArgument& argument, const GnomeBusSource& source) {
    argument.beginStructure();
    argument << source.type << source.id;
    argument.endStructure();
    return argument;
}
void operator>>(const QDBusArgument& argument, GnomeBusSource& source) {
    argument.beginStructure();
    argument >> source.type >> source.id;
    argument.endStructure();
}
QDBusArgument& operator<<(QDBusArgument& argument, const GnomeBusShortcut& shortcut) {
    argument.beginStructure();
    argument << shortcut.token << shortcut.accelerator << shortcut.sources;
    argument.endStructure();
    return argument;
}
void operator>>(const QDBusArgument& argument, GnomeBusShortcut& shortcut) {
    argument.beginStructure();
    argument >> shortcut.token >> shortcut.accelerator >> shortcut.sources;
    argument.endStructure();
}

QVariant busValueOf(const std::vector<GnomeShortcut>& table) {
    qDBusRegisterMetaType<GnomeBusSource>();
    qDBusRegisterMetaType<QList<GnomeBusSource>>();
    qDBusRegisterMetaType<GnomeBusShortcut>();
    qDBusRegisterMetaType<QList<GnomeBusShortcut>>();
    QList<GnomeBusShortcut> value;
    for (const GnomeShortcut& shortcut : table) {
        QList<GnomeBusSource> sources;
        for (const GnomeSource& source : shortcut.sources)
            sources.push_back({QString::fromStdString(source.type), QString::fromStdString(source.id)});
        value.push_back({shortcut.token, shortcut.accelerator, sources});
    }
    return QVariant::fromValue(value);
}

}  // namespace quillmere

Q_DECLARE_METATYPE(quillmere::GnomeBusSource)
Q_DECLARE_METATYPE(quillmere::GnomeBusShortcut)
