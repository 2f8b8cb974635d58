#include "Quillmere/Platform/Linux/Sources/Ibus/IbusFramework.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmere {

namespace {

const QString daemonName = QStringLiteral("org.freedesktop.IBus");
const QString settingsName = QStringLiteral("org.freedesktop.IBus.Config");

/// Every IBus has it, also where it is not among the user's.
const std::string plainKeyboard = "xkb:us::eng";

BusService::Address daemonAddress() {
    return {.name = daemonName,
            .path = QStringLiteral("/org/freedesktop/IBus"),
            .interface = daemonName,
            .harmlessMethod = QStringLiteral("GetUseGlobalEngine")};
}

BusService::Address settingsAddress() {
    return {.name = settingsName,
            .path = QStringLiteral("/org/freedesktop/IBus/Config"),
            .interface = settingsName,
            .harmlessMethod = QStringLiteral("Ping")};
}

BusService::Call questionOfCurrent() {
    return {.method = QStringLiteral("Get"),
            .arguments = {daemonName, QStringLiteral("GlobalEngine")},
            .interface = QStringLiteral("org.freedesktop.DBus.Properties")};
}

}  // namespace

IbusFramework::IbusFramework(std::function<bool()> isDesktops, std::function<bool(const XkbLayout&)> useLayout)
    : isDesktops_(std::move(isDesktops)), useLayout_(std::move(useLayout)) {
    connect(&connection_, &IbusConnection::lost, this, [this] {
        forget();
        onRunningChanged();
    });
    connect(&connection_, &IbusConnection::greeted, this, [this] {
        if (!daemon_ || !daemon_->isOwned()) meet();
        onRunningChanged();
    });
    if (isDesktops_()) return;
    connection_.look();
    // The first list that is shown shall have the methods already.
    if (connection_.bus()) meet();
}

/// Asks, by the end of a switch's time, for what a greeted connection is
/// answered at once.
void IbusFramework::meet() {
    forget();
    const SwitchWait wait;
    daemon_ = std::make_unique<BusService>(*connection_.bus(), daemonAddress(), wait.deadline());
}

void IbusFramework::forget() {
    settings_.reset();
    daemon_.reset();
    engines_.clear();
    records_.clear();
    // Another one may speak another language.
    described_.clear();
}

bool IbusFramework::isRunning() {
    if (isDesktops_()) return false;
    connection_.look();
    return daemon_ && daemon_->isOwned();
}

std::optional<InputMethodFramework::State> IbusFramework::state() {
    const std::optional<std::string> current = currentEngine();
    // Until somebody chooses, there is none in use, which is an error as well.
    if (!daemon_ || !daemon_->isAnswering()) return std::nullopt;
    readEngines(current);
    if (const Answer leaves = useLayout_ ? setting("use-system-keyboard-layout") : std::nullopt)
        setsLayouts_ = !ibusEngines::truth(*leaves).value_or(true);
    State state{.sources = records_, .current = std::nullopt, .keyboard = ibusEngines::idOf(keyboardEngine())};
    if (current) state.current = ibusEngines::idOf(*current);
    return state;
}

bool IbusFramework::select(const std::string& id) {
    const auto listed = std::ranges::find(engines_, id, ibusEngines::idOf);
    if (listed == engines_.end() && id != ibusEngines::idOf(keyboardEngine())) return false;
    const std::string engine = listed == engines_.end() ? keyboardEngine() : *listed;
    if (!daemon_) return false;
    // One after the other: the daemon answers to the first when a program that
    // it may have to start is ready, and to the second meanwhile.
    if (!ask(*daemon_, {QStringLiteral("SetGlobalEngine"), {QString::fromStdString(engine)}, {}})) return false;
    return currentEngine() == engine && (!setsLayouts_ || useLayout_(layoutUnder(engine)));
}

/// The answer's one value, invalid for an answer without; absent for an error.
IbusFramework::Answer IbusFramework::ask(BusService& service, const BusService::Call& call) {
    const SwitchWait wait;
    const auto answers = service.call({&call, 1}, wait.deadline());
    return answers ? std::optional(answers->front().value(0)) : std::nullopt;
}

IbusFramework::Answer IbusFramework::setting(const char* name) {
    // It comes after the daemon, which tells nobody.
    if (!settings_ || !settings_->isOwned()) {
        const SwitchWait wait;
        settings_ = std::make_unique<BusService>(*connection_.bus(), settingsAddress(), wait.deadline());
    }
    return ask(*settings_, {QStringLiteral("GetValue"), {QStringLiteral("general"), QString::fromLatin1(name)}, {}});
}

std::optional<std::string> IbusFramework::currentEngine() {
    const Answer answer = daemon_ ? ask(*daemon_, questionOfCurrent()) : std::nullopt;
    const auto description = answer ? ibusEngines::description(*answer) : std::nullopt;
    return description ? std::optional(description->engine) : std::nullopt;
}

/// Where the settings cannot be asked, those that were there last, and at least
/// the one that is in use.
void IbusFramework::readEngines(const std::optional<std::string>& current) {
    std::vector<std::string> engines = engines_;
    if (const Answer list = setting("preload-engines")) engines = ibusEngines::names(*list);
    if (engines.empty() && current) engines.push_back(*current);
    const bool isNew = std::exchange(engines_, std::move(engines)) != engines_;
    if (!describe() && !isNew) return;
    records_.clear();
    for (const std::string& engine : engines_)
        if (isThere(engine)) records_.push_back(recordOf(engine));
}

/// Asks what the methods are that are met for the first time; whether that has
/// told anything.
bool IbusFramework::describe() {
    QStringList unknown;
    for (const std::string& engine : engines_)
        if (!ibusEngines::layoutOf(engine) && !described_.contains(engine)) unknown << QString::fromStdString(engine);
    if (unknown.isEmpty()) return false;
    const Answer answer = ask(*daemon_, {QStringLiteral("GetEnginesByNames"), {unknown}, {}});
    if (!answer) return false;
    for (ibusEngines::Description& description : ibusEngines::descriptions(*answer))
        described_[description.engine] = std::move(description);
    for (const QString& engine : unknown)
        described_.try_emplace(engine.toStdString());
    return true;
}

/// The user's choice may name what has been uninstalled since.
bool IbusFramework::isThere(const std::string& engine) const {
    const auto found = described_.find(engine);
    return found == described_.end() || found->second;
}

/// Where there are several, the first is what the user comes back to.
const std::string& IbusFramework::keyboardEngine() const {
    const auto first = std::ranges::find_if(
        engines_, [](const std::string& engine) { return ibusEngines::layoutOf(engine).has_value(); });
    return first == engines_.end() ? plainKeyboard : *first;
}

/// A method that takes any layout gets the first keyboard's: of Cyrillic letters
/// most make nothing.
XkbLayout IbusFramework::layoutUnder(const std::string& engine) const {
    if (auto layout = ibusEngines::layoutOf(engine)) return *std::move(layout);
    const auto described = described_.find(engine);
    const bool isTold = described != described_.end() && described->second && described->second->layout;
    return isTold ? *described->second->layout : ibusEngines::layoutOf(keyboardEngine()).value_or(XkbLayout{});
}

InputSourceRecord IbusFramework::recordOf(const std::string& engine) {
    InputSourceRecord record{.id = ibusEngines::idOf(engine), .localizedName = std::nullopt};
    if (const auto layout = ibusEngines::layoutOf(engine)) {
        record.type = InputSourceType::keyboardLayout;
        if (const auto listed = registry_.describe({}, {*layout}).front()) {
            record.localizedName = listed->name;
            record.languages = listed->languages;
        }
        return record;
    }
    record.type = InputSourceType::keyboardInputMode;
    const auto found = described_.find(engine);
    if (found == described_.end() || !found->second) return record;
    if (!found->second->name.empty()) record.localizedName = found->second->name;
    if (!found->second->language.empty()) record.languages = {found->second->language};
    return record;
}

}  // namespace quillmere
