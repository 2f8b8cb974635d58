#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>
#include <QThread>

#include <atomic>
#include <mutex>
#include <string>
#include <vector>

namespace quillmere {

/// GNOME Shell with our extension in it, as a test tells it to be, in a thread
/// of its own: for the answers that the real one does not give.
class FakeGnome final : public QDBusVirtualObject {
public:
    struct Source {
        QString type;
        QString id;
        QString name;
        QString language;
    };

    /// On the bus at this address, without any name.
    explicit FakeGnome(const std::string& busAddress);
    ~FakeGnome() override;

    /// The shell takes its name, and gives it back.
    void startShell();
    void endShell();
    /// The extension does, and forgets what it was armed with.
    void enableExtension();
    void disableExtension();

    void setVersion(unsigned int version);
    void setSources(const std::vector<Source>& sources);
    void setCurrent(unsigned int index);
    unsigned int current() const;
    /// Whether it reports success and does nothing.
    void setIgnores(bool ignores);
    /// Leaves what comes unanswered, and answers all of it later.
    void standStill();
    void goOn();

    /// These combinations are somebody else's.
    void setTaken(const QStringList& accelerators);
    /// What it is armed with, a line for each shortcut:
    /// "<accelerator>: <type> <id>, <type> <id>".
    QStringList armed() const;
    /// The shortcut in this place has been pressed, and this source of its
    /// group is in effect.
    void emitSwitched(int shortcut, unsigned int index, const QString& receiver);
    /// The same, of one that is armed without sources.
    void emitPressed(int shortcut, const QString& receiver);
    /// What it shows in the top bar: "active: Active, quit: Quit, …", with
    /// "dimmed: " in front while it is told so; empty for nothing.
    QString indicator() const;
    /// Somebody chose this entry there.
    void emitChose(const QString& entry, const QString& receiver);
    /// How often it was armed.
    int armCount() const { return armCount_; }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString& path) const override;

private:
    void answer(const QDBusMessage& message);
    bool activate(const QString& type, const QString& id);
    /// Gives the tokens of what is somebody else's.
    QStringList arm(const QDBusMessage& message);
    void showIndicator(const QVariantList& arguments);
    void emitTo(const QString& receiver, const QString& signal, const QVariantList& arguments);

    QThread thread_;
    QDBusConnection bus_;
    mutable std::mutex mutex_;
    unsigned int version_ = 1;
    std::vector<Source> sources_;
    unsigned int current_ = 0;
    bool ignores_ = false;
    bool standsStill_ = false;
    std::vector<QDBusMessage> unanswered_;
    QStringList tokens_;
    QStringList armed_;
    QStringList taken_;
    QString indicator_;
    std::atomic<int> armCount_ = 0;
};

}  // namespace quillmere

Q_DECLARE_METATYPE(quillmere::FakeGnome::Source)
