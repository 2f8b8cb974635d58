#pragma once

#include "Quillmere/Platform/Linux/Sources/BusService.h"
#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxMethods.h"
#include "Quillmere/Platform/Linux/Sources/InputMethodFramework.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>

#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillmere {

/// The input methods of fcitx, version 5: those of the group that is in use. It
/// tells of no change, so every call asks; and it ignores in silence what it
/// cannot select, as anything while no window has asked it for input.
class FcitxFramework final : public InputMethodFramework {
public:
    explicit FcitxFramework(const QDBusConnection& bus);

    /// The session's; null without a message bus.
    static std::unique_ptr<FcitxFramework> create();

    std::string name() const override { return "fcitx 5"; }
    bool isRunning() override { return service_.isOwned(); }
    bool hasLayouts() const override { return true; }
    std::optional<State> state() override;
    bool select(const std::string& id) override;

private:
    using Answers = std::optional<std::vector<QVariantList>>;

    Answers ask(std::span<const BusService::Call> calls);
    Answers askForGroup();
    void takeIn(fcitxMethods::Group group);
    void describe();
    void noteDescriptions(const QVariantList& answer);
    InputSourceRecord recordOf(const std::string& method);

    QDBusConnection bus_;
    BusService service_;
    XkbLayoutRegistry registry_;
    std::string groupName_;
    fcitxMethods::Group group_;
    std::vector<InputSourceRecord> records_;  ///< of this group
    /// What fcitx has told of its methods; absent for one that it does not describe.
    std::map<std::string, std::optional<fcitxMethods::Description>> described_;
    std::unique_ptr<QDBusPendingCallWatcher> awaited_;  ///< its answer to that
};

}  // namespace quillmere
