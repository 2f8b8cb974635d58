#pragma once

#include "Quillmere/Platform/Linux/Sources/BusService.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <optional>
#include <span>
#include <vector>

namespace quillmere {

/// Our extension in GNOME Shell, on the message bus. One that speaks another
/// version counts as absent. It answers only who has this program's own name
/// there. Main thread only.
class GnomeExtension final : public QObject {
    Q_OBJECT
public:
    static constexpr unsigned int version = 1;

    static const QString name;
    static const QString path;
    static const QString interface;

    explicit GnomeExtension(const QDBusConnection& bus);

    /// Whether it is there and of our version.
    bool isLive() const { return service_.isOwned() && version_ == version; }

    /// As BusService::call.
    std::optional<std::vector<QVariantList>> call(std::span<const BusService::Call> calls,
                                                  BusService::Clock::time_point deadline);

signals:
    /// It has come, or gone. One that goes and comes back at once may be told
    /// of once only: it knows nothing of what was there before.
    void liveChanged();

private slots:
    void noteVersion(const QDBusMessage& answer);
    void noteNoVersion();

private:
    void askForVersion();

    QDBusConnection bus_;
    BusService service_;
    unsigned int version_ = 0;  ///< 0 while it is not known
};

}  // namespace quillmere
