#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"
#include "Quillmere/Platform/Offer.h"

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace quillmere {

/// Our extension for GNOME Shell: the user may have it added to the shell, and
/// taken away again. What the shell has loaded it keeps until the next login.
class GnomeExtensionOffer final : public Offer {
    Q_OBJECT
public:
    /// The installer's program beside this one.
    static QString standardProgram();

    /// Asks at once how things are, without waiting for the answer: until it is
    /// there nothing is offered.
    GnomeExtensionOffer(const QDBusConnection& bus, QString installer);
    ~GnomeExtensionOffer() override;

    bool isOpen() const override { return state_ != State::unknown; }
    QString text() const override;
    QString action() const override;
    /// Adds it, or takes it away; `changed` comes when that is done.
    void accept() override;

private:
    enum class State { unknown, absent, outdated, added };

    void run(const QString& task);
    void noteEnd();
    void setState(State state);

    GnomeExtension extension_;
    QString installer_;
    QProcess process_;
    State state_ = State::unknown;
};

}  // namespace quillmere
