#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QList>
#include <QString>

namespace quillmere {

/// logind on a private bus, with one session "a" whose lock screen a test
/// plays.
class FakeLogin : public QDBusVirtualObject {
public:
    explicit FakeLogin(const QDBusConnection& bus);
    ~FakeLogin() override;

    /// The screen is locked, or not any more, and everybody is told.
    void setLocked(bool isLocked);

    /// Questions are left open.
    bool waits = false;
    /// How often it was asked.
    int questions = 0;
    /// Ends the oldest question that was left open.
    void answer(bool isLocked);

    /// Sends what looks like `setLocked`, to one connection only.
    static void sendChange(const QDBusConnection& sender, const QString& receiver);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    QDBusConnection bus_;
    bool isLocked_ = false;
    QList<QDBusMessage> open_;
};

}  // namespace quillmere
