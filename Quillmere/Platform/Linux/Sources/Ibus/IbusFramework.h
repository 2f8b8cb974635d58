#pragma once

#include "Quillmere/Platform/Linux/Sources/BusService.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusConnection.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusEngines.h"
#include "Quillmere/Platform/Linux/Sources/InputMethodFramework.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QObject>
#include <QString>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The engines of IBus that its user has chosen: input methods, and layouts,
/// which IBus names but does not type. With each it is for whoever selects it to
/// change an X server's layout as well, as IBus's own programs do, unless its
/// user has chosen to leave the layouts to the desktop. Every call asks for what
/// is in use, since other programs switch, too.
class IbusFramework final : public QObject, public InputMethodFramework {
public:
    /// Where `isDesktops` says that IBus is the desktop's own matter, as GNOME
    /// Shell's, it is left alone.
    /// `useLayout` makes a layout the one of the X server, where that has but
    /// one; null on another desktop.
    explicit IbusFramework(std::function<bool()> isDesktops, std::function<bool(const XkbLayout&)> useLayout = nullptr);

    std::string name() const override { return "IBus"; }
    bool isRunning() override;
    bool hasLayouts() const override { return setsLayouts_; }
    std::optional<State> state() override;
    bool select(const std::string& id) override;

private:
    using Answer = std::optional<QVariant>;

    void meet();
    void forget();
    Answer ask(BusService& service, const BusService::Call& call);
    Answer setting(const char* name);
    std::optional<std::string> currentEngine();
    void readEngines(const std::optional<std::string>& current);
    bool describe();
    bool isThere(const std::string& engine) const;
    const std::string& keyboardEngine() const;
    XkbLayout layoutUnder(const std::string& engine) const;
    InputSourceRecord recordOf(const std::string& engine);

    std::function<bool()> isDesktops_;
    std::function<bool(const XkbLayout&)> useLayout_;
    bool setsLayouts_ = false;
    IbusConnection connection_;
    std::unique_ptr<BusService> daemon_;    ///< null until it has been met
    std::unique_ptr<BusService> settings_;  ///< a program of its own; null until it is asked
    XkbLayoutRegistry registry_;
    std::vector<std::string> engines_;        ///< of the user's choice, in order
    std::vector<InputSourceRecord> records_;  ///< of these
    /// What IBus has told of its methods; absent for one that it does not have.
    std::map<std::string, std::optional<ibusEngines::Description>> described_;
};

}  // namespace quillmere
