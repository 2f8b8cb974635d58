#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayKeyBindings.h"
#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// sway itself as the keyboard filter: its key bindings swallow the shortcuts and
/// switch by themselves, before the next key gets anywhere; a shortcut that is
/// armed with no sources they swallow and tell of. No permission is needed, and
/// no other key comes here at all. What it cannot do: a lone tap of Fn is
/// no key press to it, there is none to record a shortcut from, and while the
/// screen is locked or another mode of bindings is in use it does nothing.
///
/// A binding would take the place of the user's own without a word, so a
/// combination that their configuration has stays theirs.
class SwayEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    /// `socket` is that of sway, or empty. `sources` are the desktop's own and
    /// must outlive this.
    SwayEventTap(const std::string& socket, InputSourceService& sources);
    ~SwayEventTap() override;

    /// False without sway, which may come later, and also while a lone tap of Fn is wanted, which
    /// nobody hears here: the permission for what does is missing. The other
    /// shortcuts work meanwhile.
    bool install(Callback callback) override;
    /// It is never disabled.
    void enable() override {}
    void setInterest(const KeyInterest& interest) override;
    /// False while a lone tap of Fn is wanted, which nobody hears here.
    bool deliversAll() const override;
    void arm(const std::vector<ArmedShortcut>& shortcuts) override;

    /// The shortcuts of interest that are left to the user's configuration.
    const TakenShortcuts& taken() const { return taken_; }

private:
    bool open();
    void notePressed(const SwayBinding& binding);
    void tell();
    void tellTwice();
    std::vector<SwayBinding> wanted();
    bool isUntold() const;
    bool isWanted(const Shortcut& shortcut) const;

    std::string socket_;
    InputSourceService& sources_;
    std::unique_ptr<SwayKeyBindings> bindings_;  ///< null without sway
    std::optional<ReservedKeys> reserved_;       ///< absent until sway has told
    QTimer again_;                               ///< until it has
    bool isInstalled_ = false;
    Callback callback_;
    KeyInterest interest_;
    std::vector<ArmedShortcut> shortcuts_;
    TakenShortcuts taken_;
};

}  // namespace quillmere
