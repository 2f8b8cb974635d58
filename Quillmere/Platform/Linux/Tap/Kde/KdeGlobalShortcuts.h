#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>

#include <map>
#include <optional>
#include <vector>

namespace quillmere {

/// This program's part of KDE's global shortcuts (org.kde.kglobalaccel). The
/// desktop keeps them in a file of the user's (kglobalshortcutsrc) and swallows
/// their keys whether anybody listens or not, so all are taken back at the end,
/// and at the start those that were left by a program that was killed. A
/// combination that belongs to somebody else stays theirs. Nothing here waits
/// but the end. Main thread only.
class KdeGlobalShortcuts final : public QObject {
    Q_OBJECT
public:
    /// What a shortcut is called in the desktop's settings, and the codes of
    /// the combinations that press it.
    struct Wanted {
        QString label;
        std::vector<int> keys;

        friend bool operator==(const Wanted&, const Wanted&) = default;
    };
    /// By a name of letters, digits and signs that lasts.
    using WantedByName = std::map<QString, Wanted>;

    explicit KdeGlobalShortcuts(const QDBusConnection& bus);
    /// Takes back what is set; waits for that, but not long.
    ~KdeGlobalShortcuts() override;

    /// Whether the desktop offers them at this moment.
    static bool areThere(const QDBusConnection& bus);

    /// The program whose shortcut this combination is, by the name that the
    /// desktop shows; empty when it is nobody's, absent when the desktop does not
    /// say within a second.
    static std::optional<QString> holder(const QDBusConnection& bus, int key);

    /// Replaces what is set.
    void set(const WantedByName& wanted);
    /// Sets everything once more: the desktop has forgotten it.
    void setAgain();

signals:
    /// A key of a shortcut with this name has gone down; comes again while it
    /// is held.
    void pressed(const QString& name);
    /// It has gone up.
    void released(const QString& name);
    /// The first combination of the shortcut with this name is somebody else's,
    /// or it is not; comes whenever it has been set.
    void refused(const QString& name, bool isRefused);

private slots:
    void noteLeftovers(const QDBusMessage& names);
    void notePressed(const QString& component, const QString& name, qlonglong time);
    void noteReleased(const QString& component, const QString& name, qlonglong time);

private:
    void listen();
    void askForLeftovers();
    void put(const QString& name, const Wanted& wanted);
    void askForOwner(const QString& name, const Wanted& wanted);
    void remove(const QString& name);

    QDBusConnection bus_;
    WantedByName set_;
};

}  // namespace quillmere
