#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QImage>
#include <QObject>
#include <QStringList>

#include <optional>
#include <string>
#include <vector>

class QDBusServiceWatcher;

namespace quillmere::support {

/// One entry of an item's menu as the panel shows it.
struct MenuEntry {
    int id = 0;
    std::string label;  ///< without access-key marks
    bool isSeparator = false;
    bool isEnabled = true;
    bool isChecked = false;
    std::string toggleType;             ///< "checkmark", "radio" or empty
    std::vector<std::string> shortcut;  ///< keys from modifier to key: "Control", "q"
};

/// A desktop's panel with a place for tray icons: org.kde.StatusNotifierWatcher
/// and its host, as of the freedesktop.org StatusNotifierItem specification,
/// and a user at it who opens an item's menu (com.canonical.dbusmenu). Answers
/// only while its thread's event loop runs (`waitUntil` does).
class TrayPanel : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
public:
    /// Takes the watcher's name on the bus. Throws when it is taken.
    explicit TrayPanel(QDBusConnection bus);
    ~TrayPanel() override;

    /// "service/path" of each item that is there now.
    QStringList items() const { return items_; }
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }

    bool hasItem() const { return !items_.isEmpty(); }

    /// The first item's icon, in the size nearest to `size` pixels; a null
    /// image when it has none.
    QImage icon(int size) const;
    /// A text property of the first item, such as "Id", "Title" or "Status".
    std::string property(const char* name) const;

    /// Opens the first item's menu and reads it; empty when there is none.
    std::vector<MenuEntry> openMenu();
    /// Opens the menu and clicks the entry with this label; false when there
    /// is none such.
    bool click(const std::string& label);
    /// Clicks it `times` times in a row without looking what comes of it.
    void clickWithoutWaiting(const std::string& label, int times);

public slots:
    /// Called by items.
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& service);
    /// Called by other hosts.
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString& service);

signals:
    Q_SCRIPTABLE void StatusNotifierItemRegistered(const QString& item);
    Q_SCRIPTABLE void StatusNotifierItemUnregistered(const QString& item);
    Q_SCRIPTABLE void StatusNotifierHostRegistered();

private:
    struct Address {
        QString service;
        QString path;
    };
    struct Target {
        Address menu;
        int entry;
    };
    std::optional<Address> firstItem() const;
    std::optional<Target> find(const std::string& label);
    std::optional<Address> menuOf(const Address& item) const;
    QVariant itemProperty(const Address& item, const QString& name) const;
    void forget(const QString& service);

    QDBusConnection bus_;
    QDBusServiceWatcher* watcher_;
    QStringList items_;
};

}  // namespace quillmere::support
