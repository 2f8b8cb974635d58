#pragma once

#include "Benchmarks/EventClock.h"
#include "Benchmarks/Moment.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QThread>

namespace quillmere::bench {

/// A program's text field as fcitx knows it: passes its keys on to fcitx, as the
/// toolkits' modules do, and is told by it which method is in use, in a thread
/// of its own.
class FcitxField : public QObject {
    Q_OBJECT
public:
    /// `path`: of the field on this bus, by the connection that has opened it.
    FcitxField(const QDBusConnection& bus, const QString& path);
    ~FcitxField() override;

    /// May be called from any thread.
    void pass(const WindowKey& key) const;

    /// When it has heard of another method.
    Moment& methodChange() { return methodChange_; }

private slots:
    void noteMethod() { methodChange_.note(); }

private:
    QDBusConnection bus_;
    QString path_;
    Moment methodChange_;
    QThread thread_;
};

}  // namespace quillmere::bench
