#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Sources/BusService.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeGlobalShortcuts.h"
#include "Quillmere/Platform/Linux/Tap/Kde/KdeKeyNames.h"
#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"

#include <QDBusConnection>
#include <QObject>

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// KDE itself as the keyboard filter: its global shortcuts swallow the keys and
/// tell of them. No permission is needed and ordinary typing does not come here
/// at all. What it cannot do: a key that is typed within some milliseconds after
/// the shortcut is in the old layout, since nobody holds it back; a lone tap of
/// Fn is no shortcut to it; and it tells of no key to record.
class KdeEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    /// `sources` are the desktop's own and must outlive this.
    KdeEventTap(const QDBusConnection& bus, InputSourceService& sources);
    ~KdeEventTap() override;

    /// The same as `deliversAll`, where the desktop is KDE.
    bool install(Callback callback) override;
    /// It is never disabled.
    void enable() override {}
    void setInterest(const KeyInterest& interest) override;
    /// False while a lone tap of Fn is wanted, which nobody hears here: the
    /// permission for what does is missing. The other shortcuts work meanwhile.
    bool deliversAll() const override;

    /// The shortcuts of interest that the desktop has for something else.
    const TakenShortcuts& taken() const { return taken_; }

private slots:
    /// The layout in use, or the list, is another one.
    void nameAnew();

private:
    void tell();
    void notePressed(const QString& name);
    void noteReleased(const QString& name);
    void noteRefused(const QString& name, bool isRefused);

    QDBusConnection bus_;
    InputSourceService& sources_;
    BusService desktop_;
    Callback callback_;
    KeyInterest interest_;
    std::unique_ptr<KdeGlobalShortcuts> shortcuts_;  ///< once it is installed
    std::map<QString, Shortcut> byName_;
    std::set<QString> held_;
    TakenShortcuts taken_;
    std::optional<KdeKeyNames> keyNames_;
    std::vector<std::string> namedFor_;  ///< the layouts of the names
};

}  // namespace quillmere
