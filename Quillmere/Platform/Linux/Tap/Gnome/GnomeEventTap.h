#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"
#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeShortcutTable.h"
#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"

#include <QDBusConnection>
#include <QObject>

#include <map>
#include <string>
#include <vector>

namespace quillmere {

/// GNOME Shell itself as the keyboard filter, through our extension: the shell
/// swallows the shortcuts and switches by itself, by a table that it is armed
/// with, before the next key gets anywhere; a shortcut that is armed with no
/// sources it swallows and tells of. No permission is needed, and no other key
/// comes here at all. What it cannot do: a lone tap of Fn is no key to it, and
/// there is none to record a shortcut from.
///
/// On Wayland only: under an X server other programs get the next key sooner.
class GnomeEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    explicit GnomeEventTap(const QDBusConnection& bus);
    ~GnomeEventTap() override;

    /// False without the extension, and also while a lone tap of Fn is wanted,
    /// which nobody hears here: the permission for what does is missing. The
    /// other shortcuts work meanwhile. Once installed it is there again whenever
    /// the extension is.
    bool install(Callback callback) override;
    /// It is never disabled.
    void enable() override {}
    void setInterest(const KeyInterest& interest) override;
    /// False while a lone tap of Fn is wanted, which nobody hears here.
    bool deliversAll() const override;
    void arm(const std::vector<ArmedShortcut>& shortcuts) override;

    /// The shortcuts of interest that the shell has for something else.
    const TakenShortcuts& taken() const { return taken_; }

private slots:
    void noteSwitched(const QString& token, uint index);
    void notePressed(const QString& token);

private:
    void listen();
    void tell();
    void send();
    void noteTaken(const QStringList& tokens);

    QDBusConnection bus_;
    GnomeExtension extension_;
    bool isInstalled_ = false;
    Callback callback_;
    KeyInterest interest_;
    std::vector<ArmedShortcut> shortcuts_;
    std::vector<ArmedShortcut> told_;   ///< what the extension has been armed with
    unsigned int tables_ = 0;           ///< how many there have been
    std::vector<GnomeShortcut> table_;  ///< of `told_`
    std::map<QString, ArmedShortcut> byToken_;
    TakenShortcuts taken_;
};

}  // namespace quillmere
