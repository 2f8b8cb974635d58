#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"

#include "Quillmere/Platform/Linux/LinuxSession.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

using namespace std::chrono_literals;
using Message = SwayConnection::Message;
using Request = SwayConnection::Request;

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

constexpr auto patienceAtStart = 3s;

// A layout that no list has, of a keymap that its user has made.
constexpr std::string_view unlistedPrefix = "sway:";

}  // namespace

std::unique_ptr<SwayInputSources> SwayInputSources::create() {
    const std::string path = LinuxSession::current().swaySocket;
    if (path.empty()) return nullptr;
    std::unique_ptr<SwayInputSources> sources(new SwayInputSources(path));
    if (!sources->connect()) return nullptr;
    sources->refresh(Clock::now() + patienceAtStart);
    return sources;
}

SwayInputSources::~SwayInputSources() = default;

/// Again where the compositor has closed the connection: it does so with a
/// program that has not read its events for long.
bool SwayInputSources::connect() {
    // Whether it is lost shows only in reading.
    if (connection_) connection_->receive();
    if (connection_ && !connection_->isLost()) return true;
    // Its signal may be what has called.
    if (incoming_) incoming_.release()->deleteLater();
    isSubscribed_ = false;
    connection_ = SwayConnection::open(path_);
    if (connection_)
        listen();
    else
        keyboards_ = {};
    return connection_ != nullptr;
}

void SwayInputSources::listen() {
    incoming_ = std::make_unique<QSocketNotifier>(connection_->fileDescriptor(), QSocketNotifier::Read);
    QObject::connect(incoming_.get(), &QSocketNotifier::activated, incoming_.get(), [this] {
        connection_->receive();
        // A lost connection stays readable for ever.
        if (connection_->isLost())
            incoming_->setEnabled(false);
        else if (connection_->hasEvents())
            refresh(SwitchWait().deadline());
    });
}

std::vector<InputSourceRecord> SwayInputSources::sources() {
    const SwitchWait wait;
    refresh(wait.deadline());
    const std::vector<std::string>& names = keyboards_.layouts();
    const auto listed = registry_.named(names);
    std::vector<InputSourceRecord> records;
    for (std::size_t i = 0; i < names.size(); ++i) {
        InputSourceRecord record{.id = idOf(names[i]), .localizedName = names[i]};
        record.type = InputSourceType::keyboardLayout;
        if (listed[i]) record.languages = listed[i]->description.languages;
        records.push_back(std::move(record));
    }
    return records;
}

std::optional<std::string> SwayInputSources::currentID() {
    const SwitchWait wait;
    if (!refresh(wait.deadline()) || !current_) return std::nullopt;
    return idOf(*current_);
}

int SwayInputSources::select(const InputSourceRecord& source) {
    if (!source.id) return statusRefused;
    const SwitchWait wait;
    const auto deadline = wait.deadline();
    // A second time in case the list was another than it seemed.
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::optional<std::string> layout = layoutOf(*source.id);
        if (!run(layout ? keyboards_.command(*layout) : std::string(), deadline)) return statusRefused;
        // The reply to a command is success, whatever has come of it.
        if (!layout || !keyboards_.isInUse(*layout)) continue;
        current_ = layout;
        return statusSwitched;
    }
    return statusRefused;
}

bool SwayInputSources::refresh(Clock::time_point deadline) {
    const SwayKeyboards before = keyboards_;
    if (!run({}, deadline)) return false;
    const std::string command = carryOver(before);
    return command.empty() || run(command, deadline);
}

/// Runs the command, if it is one, and reads the keyboards after it.
bool SwayInputSources::run(std::string command, Clock::time_point deadline) {
    if (!connect()) return false;
    std::vector<Message> messages;
    // Before the first reading, so that no change after it goes unseen.
    if (!std::exchange(isSubscribed_, true)) messages.push_back({Request::subscribe, R"(["input"])"});
    if (!command.empty()) messages.push_back({Request::runCommand, std::move(command)});
    messages.push_back({Request::getInputs, {}});
    const auto replies = connection_->exchange(messages, deadline);
    return replies && takeIn(replies->back());
}

bool SwayInputSources::takeIn(const QByteArray& inputs) {
    std::optional<SwayKeyboards> keyboards = SwayKeyboards::parse(inputs);
    if (!keyboards) return false;
    keyboards_ = *std::move(keyboards);
    for (const QByteArray& event : connection_->takeEvents())
        note(event);
    current_ = keyboards_.current(current_);
    return true;
}

void SwayInputSources::note(const QByteArray& event) {
    const QJsonObject object = QJsonDocument::fromJson(event).object();
    const QJsonObject input = object["input"].toObject();
    const std::string identifier = input["identifier"].toString().toStdString();
    const QString change = object["change"].toString();
    // Newer desktops give a program's keyboard its layouts after it was added.
    if (change == QLatin1String("added") || change == QLatin1String("xkb_keymap")) added_.insert(identifier);
    // What the user is typing on, if the desktop switches each keyboard by itself.
    if (change == QLatin1String("xkb_layout") && keyboards_.isPeer(identifier))
        current_ = input["xkb_active_layout_name"].toString().toStdString();
}

/// The command that brings new keyboards to the layout in use.
std::string SwayInputSources::carryOver(const SwayKeyboards& before) {
    std::set<std::string> identifiers = keyboards_.newcomers(before);
    identifiers.merge(std::exchange(added_, {}));
    // At the start nothing is new.
    if (before.layouts().empty() || !current_) return {};
    return keyboards_.command(*current_, identifiers);
}

std::string SwayInputSources::idOf(const std::string& layout) {
    const auto listed = registry_.named({layout}).front();
    return listed ? listed->layout.id() : std::string(unlistedPrefix) + layout;
}

std::optional<std::string> SwayInputSources::layoutOf(const std::string& id) {
    const std::vector<std::string>& layouts = keyboards_.layouts();
    const auto found = std::ranges::find_if(layouts, [&](const std::string& layout) { return idOf(layout) == id; });
    if (found == layouts.end()) return std::nullopt;
    return *found;
}

}  // namespace quillmere
