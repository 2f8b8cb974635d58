#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxFramework.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quillmere {

namespace {

const QString currentMethod = QStringLiteral("CurrentInputMethod");
const QString availableMethods = QStringLiteral("AvailableInputMethods");

BusService::Address address() {
    return {.name = QStringLiteral("org.fcitx.Fcitx5"),
            .path = QStringLiteral("/controller"),
            .interface = QStringLiteral("org.fcitx.Fcitx.Controller1"),
            .harmlessMethod = currentMethod};
}

}  // namespace

FcitxFramework::FcitxFramework(const QDBusConnection& bus)
    : bus_(bus), service_(bus_, address(), SwitchWait().deadline()) {
    // Another one may speak another language.
    QObject::connect(&service_, &BusService::ownedChanged, &service_, [this] {
        awaited_.reset();
        described_.clear();
        records_.clear();
        onRunningChanged();
    });
    // The first list that is shown shall have the names already.
    const BusService::Call call{availableMethods, {}};
    if (const Answers answers = ask(std::span(&call, 1))) noteDescriptions(answers->front());
}

std::unique_ptr<FcitxFramework> FcitxFramework::create() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::make_unique<FcitxFramework>(bus) : nullptr;
}

FcitxFramework::Answers FcitxFramework::ask(std::span<const BusService::Call> calls) {
    const SwitchWait wait;
    return service_.call(calls, wait.deadline());
}

std::optional<InputMethodFramework::State> FcitxFramework::state() {
    const Answers answers = askForGroup();
    auto group = answers ? fcitxMethods::group((*answers)[1]) : std::nullopt;
    if (!group) return std::nullopt;
    takeIn(*std::move(group));
    State state{.sources = records_, .current = std::nullopt, .keyboard = std::nullopt};
    const std::string current = answers->back().value(0).toString().toStdString();
    if (!current.empty()) state.current = fcitxMethods::idOf(current);
    // The group's own layout leaves the keys as they are; with another, fcitx
    // types for the keyboard.
    const auto own = std::ranges::find(group_.methods, fcitxMethods::keyboardWith(group_.layout));
    const auto first = std::ranges::find_if(group_.methods, fcitxMethods::isKeyboard);
    const auto keyboard = own == group_.methods.end() ? first : own;
    if (keyboard != group_.methods.end()) state.keyboard = fcitxMethods::idOf(*keyboard);
    return state;
}

bool FcitxFramework::select(const std::string& id) {
    const auto method = std::ranges::find(group_.methods, id, fcitxMethods::idOf);
    if (method == group_.methods.end()) return false;
    const QString name = QString::fromStdString(*method);
    const std::array<BusService::Call, 2> calls{{{QStringLiteral("SetCurrentIM"), {name}}, {currentMethod, {}}}};
    const Answers answers = ask(calls);
    return answers && answers->back().value(0).toString() == name;
}

/// Which group is in use, what is in it, and what is current.
FcitxFramework::Answers FcitxFramework::askForGroup() {
    // Together with the question which group it is, the one it was is asked for.
    constexpr int attempts = 3;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::array<BusService::Call, 3> calls{
            {{QStringLiteral("CurrentInputMethodGroup"), {}},
             {QStringLiteral("InputMethodGroupInfo"), {QString::fromStdString(groupName_)}},
             {currentMethod, {}}}};
        Answers answers = ask(calls);
        if (!answers) return std::nullopt;
        const std::string name = answers->front().value(0).toString().toStdString();
        if (std::exchange(groupName_, name) == name) return answers;
    }
    return std::nullopt;
}

void FcitxFramework::takeIn(fcitxMethods::Group group) {
    if (group == group_ && !records_.empty()) return;
    group_ = std::move(group);
    describe();
    records_.clear();
    std::ranges::transform(group_.methods, std::back_inserter(records_),
                           [this](const std::string& method) { return recordOf(method); });
}

/// Asks what the methods are called when one is met for the first time. Nobody
/// waits for the answer: it tells of all that there are (about 700, a hundred
/// kilobytes), and a press may be what has met it.
void FcitxFramework::describe() {
    const bool isKnown = std::ranges::all_of(group_.methods, [this](const std::string& method) {
        return fcitxMethods::isKeyboard(method) || described_.contains(method);
    });
    if (isKnown || awaited_) return;
    QDBusMessage question =
        QDBusMessage::createMethodCall(address().name, address().path, address().interface, availableMethods);
    question.setAutoStartService(false);
    awaited_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question));
    QObject::connect(awaited_.get(), &QDBusPendingCallWatcher::finished, &service_, [this] {
        const QDBusMessage answer = awaited_->reply();
        // Its own signal: not deleted at once.
        awaited_.release()->deleteLater();
        if (answer.type() == QDBusMessage::ReplyMessage) noteDescriptions(answer.arguments());
    });
}

void FcitxFramework::noteDescriptions(const QVariantList& answer) {
    for (auto& [method, description] : fcitxMethods::descriptions(answer.value(0)))
        described_[method] = std::move(description);
    for (const std::string& method : group_.methods)
        described_.try_emplace(method);
    records_.clear();
}

InputSourceRecord FcitxFramework::recordOf(const std::string& method) {
    InputSourceRecord record{.id = fcitxMethods::idOf(method), .localizedName = std::nullopt};
    if (fcitxMethods::isKeyboard(method)) {
        record.type = InputSourceType::keyboardLayout;
        const auto listed = registry_.describe({}, {fcitxMethods::layoutOf(method)}).front();
        if (listed) {
            record.localizedName = listed->name;
            record.languages = listed->languages;
        }
        return record;
    }
    record.type = InputSourceType::keyboardInputMode;
    const auto found = described_.find(method);
    if (found == described_.end() || !found->second) return record;
    record.localizedName = found->second->name;
    if (!found->second->language.empty()) record.languages = {found->second->language};
    return record;
}

}  // namespace quillmere
