#include "Tests/Support/TrayPanel.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QVariantMap>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>

namespace quillmere::support {

namespace {

const QString watcherName = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString itemPath = QStringLiteral("/StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");

/// Pixels of "IconPixmap", a(iiay): 32-bit ARGB in network byte order, not
/// premultiplied.
QImage readPixmap(const QDBusArgument& argument) {
    int width = 0;
    int height = 0;
    QByteArray bytes;
    argument.beginStructure();
    argument >> width >> height >> bytes;
    argument.endStructure();
    if (width <= 0 || height <= 0 || bytes.size() != qsizetype{4} * width * height) return {};
    QImage image(width, height, QImage::Format_ARGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qFromBigEndian<quint32>(bytes.constData() + 4 * (qsizetype{y} * width + x)));
    return image;
}

std::vector<QImage> readPixmaps(const QVariant& value) {
    std::vector<QImage> images;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType) return images;
    argument.beginArray();
    while (!argument.atEnd())
        images.push_back(readPixmap(argument));
    argument.endArray();
    return images;
}

/// "Quit _Program" is shown as "Quit Program"; two marks are one underscore.
std::string withoutMark(const QString& label) {
    QString shown;
    bool isMarked = false;
    for (const QChar character : label) {
        isMarked = character == u'_' && !isMarked;
        if (!isMarked) shown += character;
    }
    return shown.toStdString();
}

std::vector<std::string> readShortcut(const QVariant& value) {
    std::vector<std::string> keys;
    if (!value.canConvert<QDBusArgument>()) return keys;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentType() != QDBusArgument::ArrayType) return keys;
    argument.beginArray();
    while (!argument.atEnd()) {
        QStringList combination;
        argument >> combination;
        for (const QString& key : combination)
            keys.push_back(key.toStdString());
    }
    argument.endArray();
    return keys;
}

/// One node of the layout, (ia{sv}av), without its children.
MenuEntry readEntry(const QDBusArgument& argument) {
    MenuEntry entry;
    QVariantMap properties;
    QVariantList children;
    argument.beginStructure();
    argument >> entry.id >> properties >> children;
    argument.endStructure();
    entry.label = withoutMark(properties.value(QStringLiteral("label")).toString());
    entry.isSeparator = properties.value(QStringLiteral("type")).toString() == QStringLiteral("separator");
    entry.isEnabled = properties.value(QStringLiteral("enabled"), true).toBool();
    entry.toggleType = properties.value(QStringLiteral("toggle-type")).toString().toStdString();
    entry.isChecked = properties.value(QStringLiteral("toggle-state")).toInt() == 1;
    entry.shortcut = readShortcut(properties.value(QStringLiteral("shortcut")));
    return entry;
}

/// The children of the layout's root, in the panel's order.
std::vector<MenuEntry> readLayout(const QVariant& value) {
    std::vector<MenuEntry> entries;
    const auto root = value.value<QDBusArgument>();
    if (root.currentType() != QDBusArgument::StructureType) return entries;
    int rootID = 0;
    QVariantMap properties;
    root.beginStructure();
    root >> rootID >> properties;
    root.beginArray();
    while (!root.atEnd()) {
        QDBusVariant child;
        root >> child;
        entries.push_back(readEntry(child.variant().value<QDBusArgument>()));
    }
    root.endArray();
    root.endStructure();
    return entries;
}

QVariantList clickArguments(int entry) {
    constexpr uint now = 0;
    return {entry, QStringLiteral("clicked"), QVariant::fromValue(QDBusVariant(0)), now};
}

}  // namespace

TrayPanel::TrayPanel(QDBusConnection bus) : bus_(std::move(bus)), watcher_(new QDBusServiceWatcher(this)) {
    watcher_->setConnection(bus_);
    watcher_->setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(watcher_, &QDBusServiceWatcher::serviceUnregistered, this, &TrayPanel::forget);
    const QDBusConnection::RegisterOptions everything =
        QDBusConnection::ExportScriptableContents | QDBusConnection::ExportAllProperties;
    if (!bus_.registerObject(watcherPath, this, everything) || !bus_.registerService(watcherName))
        throw SupportError("no tray on the bus");
    emit StatusNotifierHostRegistered();
}

TrayPanel::~TrayPanel() {
    bus_.unregisterService(watcherName);
    bus_.unregisterObject(watcherPath);
}

void TrayPanel::RegisterStatusNotifierItem(const QString& service) {
    // Some programs hand over their object's path, others their name.
    const bool isPath = service.startsWith(u'/');
    const QString owner = isPath ? message().service() : service;
    const QString item = owner + (isPath ? service : itemPath);
    if (items_.contains(item)) return;
    items_.append(item);
    watcher_->addWatchedService(owner);
    emit StatusNotifierItemRegistered(item);
}

void TrayPanel::RegisterStatusNotifierHost(const QString& /*service*/) {
    emit StatusNotifierHostRegistered();
}

void TrayPanel::forget(const QString& service) {
    const QStringList gone = items_.filter(service + u'/');
    for (const QString& item : gone) {
        items_.removeAll(item);
        emit StatusNotifierItemUnregistered(item);
    }
}

std::optional<TrayPanel::Address> TrayPanel::firstItem() const {
    if (items_.isEmpty()) return std::nullopt;
    const QString item = items_.first();
    const qsizetype slash = item.indexOf(u'/');
    return Address{item.left(slash), item.mid(slash)};
}

QVariant TrayPanel::itemProperty(const Address& item, const QString& name) const {
    const QDBusMessage reply =
        callMethod(bus_, item.service, item.path, QStringLiteral("org.freedesktop.DBus.Properties"),
                   QStringLiteral("Get"), {itemInterface, name});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

QImage TrayPanel::icon(int size) const {
    const auto item = firstItem();
    if (!item) return {};
    const std::vector<QImage> images = readPixmaps(itemProperty(*item, QStringLiteral("IconPixmap")));
    const auto distance = [size](const QImage& image) { return std::abs(image.width() - size); };
    const auto nearest = std::ranges::min_element(images, {}, distance);
    return nearest == images.end() ? QImage() : *nearest;
}

std::string TrayPanel::property(const char* name) const {
    const auto item = firstItem();
    return item ? itemProperty(*item, QString::fromLatin1(name)).toString().toStdString() : std::string{};
}

std::optional<TrayPanel::Address> TrayPanel::menuOf(const Address& item) const {
    const auto path = itemProperty(item, QStringLiteral("Menu")).value<QDBusObjectPath>();
    if (path.path().isEmpty()) return std::nullopt;
    return Address{item.service, path.path()};
}

std::vector<MenuEntry> TrayPanel::openMenu() {
    const auto item = firstItem();
    const auto menu = item ? menuOf(*item) : std::nullopt;
    if (!menu) return {};
    callMethod(bus_, menu->service, menu->path, menuInterface, QStringLiteral("AboutToShow"), {0});
    callMethod(bus_, menu->service, menu->path, menuInterface, QStringLiteral("Event"),
               {0, QStringLiteral("opened"), QVariant::fromValue(QDBusVariant(0)), 0U});
    const QDBusMessage layout =
        callMethod(bus_, menu->service, menu->path, menuInterface, QStringLiteral("GetLayout"), {0, 1, QStringList()});
    if (layout.type() != QDBusMessage::ReplyMessage || layout.arguments().size() < 2) return {};
    return readLayout(layout.arguments().at(1));
}

std::optional<TrayPanel::Target> TrayPanel::find(const std::string& label) {
    const std::vector<MenuEntry> entries = openMenu();
    const auto entry = std::ranges::find(entries, label, &MenuEntry::label);
    const auto item = firstItem();
    const auto menu = item && entry != entries.end() ? menuOf(*item) : std::nullopt;
    return menu ? std::optional(Target{*menu, entry->id}) : std::nullopt;
}

bool TrayPanel::click(const std::string& label) {
    const auto target = find(label);
    if (!target) return false;
    const QDBusMessage reply = callMethod(bus_, target->menu.service, target->menu.path, menuInterface,
                                          QStringLiteral("Event"), clickArguments(target->entry));
    return reply.type() == QDBusMessage::ReplyMessage;
}

void TrayPanel::clickWithoutWaiting(const std::string& label, int times) {
    const auto target = find(label);
    if (!target) throw SupportError("no menu entry " + label);
    QDBusMessage event =
        QDBusMessage::createMethodCall(target->menu.service, target->menu.path, menuInterface, QStringLiteral("Event"));
    event.setArguments(clickArguments(target->entry));
    for (int i = 0; i < times; ++i)
        bus_.send(event);
}

}  // namespace quillmere::support
