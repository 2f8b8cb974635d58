#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>

#include <vector>

namespace quillmere {

/// polkit on a private bus, whose user a test plays.
class FakeAuthority : public QDBusVirtualObject {
public:
    explicit FakeAuthority(const QDBusConnection& bus);

    /// How a dialog ends; `ask` leaves it open.
    enum class Answer { ask, yes, no, error };
    Answer answer = Answer::yes;

    struct Question {
        QString subject;  ///< the bus name that is asked for
        QString action;
        unsigned int flags = 0;
        QString cancellation;
    };
    std::vector<Question> questions;
    QStringList cancelled;

    /// Ends the dialog that was left open.
    void finish(bool isAuthorized);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    static QDBusMessage reply(const QDBusMessage& call, bool isAuthorized);
    void checkAuthorization(const QDBusMessage& call, const QDBusConnection& connection);

    QDBusConnection bus_;
    QDBusMessage open_;
};

}  // namespace quillmere
