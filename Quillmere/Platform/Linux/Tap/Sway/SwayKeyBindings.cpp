#include "Quillmere/Platform/Linux/Tap/Sway/SwayKeyBindings.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Tap/ModifierBits.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayAnswers.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillmere {

namespace {

using namespace std::chrono_literals;
using Request = SwayConnection::Request;

constexpr auto patienceAtStart = 3s;
constexpr const char* usualMode = "default";

QJsonObject objectIn(const QByteArray& reply) {
    return QJsonDocument::fromJson(reply).object();
}

unsigned int modifiersIn(const QJsonValue& names) {
    unsigned int modifiers = 0;
    for (const auto& name : names.toArray())
        modifiers |= modifierBits::named(name.toString().toStdString()).value_or(0);
    return modifiers;
}

}  // namespace

std::unique_ptr<SwayKeyBindings> SwayKeyBindings::create(const std::string& socket) {
    if (socket.empty()) return nullptr;
    std::unique_ptr<SwayKeyBindings> bindings(new SwayKeyBindings(socket));
    if (!bindings->open(Clock::now() + patienceAtStart)) return nullptr;
    // Takes back what was left.
    bindings->set({});
    return bindings;
}

SwayKeyBindings::SwayKeyBindings(std::string socket)
    : socket_(std::move(socket)), leftovers_(socket_), bound_(leftovers_.read()) {}

SwayKeyBindings::~SwayKeyBindings() {
    set({});
}

bool SwayKeyBindings::open(Clock::time_point deadline) {
    // Its signal may be what has called.
    if (incoming_) incoming_.release()->deleteLater();
    connection_ = SwayConnection::open(socket_);
    if (!connection_) return false;
    // The subscription first, so that no change after the answers goes unseen.
    const auto replies = exchange({{Request::subscribe, R"(["binding", "input", "mode", "workspace"])"},
                                   {Request::getVersion, {}},
                                   {Request::getBindingState, {}}},
                                  deadline);
    if (!replies || !swayAnswers::canBind((*replies)[1])) return false;
    mode_ = objectIn((*replies)[2])["name"].toString().toStdString();
    incoming_ = std::make_unique<QSocketNotifier>(connection_->fileDescriptor(), QSocketNotifier::Read);
    connect(incoming_.get(), &QSocketNotifier::activated, this, &SwayKeyBindings::readSocket);
    return true;
}

void SwayKeyBindings::readSocket() {
    connection_->receive();
    takeEvents();
    if (!connection_->isLost()) return;
    // It closes the connection of a program that has not read for long.
    const SwitchWait wait;
    if (!open(wait.deadline())) return;
    set_.clear();
    emit forgotten();
}

void SwayKeyBindings::takeEvents() {
    if (!connection_) return;
    for (const QByteArray& event : connection_->takeEvents())
        note(objectIn(event));
}

void SwayKeyBindings::note(const QJsonObject& event) {
    const QString change = event["change"].toString();
    if (event.contains(QLatin1String("binding")))
        notePress(event["binding"].toObject());
    else if (event.contains(QLatin1String("pango_markup")))
        mode_ = change.toStdString();
    else if (event.contains(QLatin1String("input")) && change != QLatin1String("xkb_layout"))
        emit layoutsChanged();
    else if (change == QLatin1String("reload")) {
        set_.clear();
        emit forgotten();
    }
}

void SwayKeyBindings::notePress(const QJsonObject& binding) {
    const unsigned int modifiers = modifiersIn(binding["event_state_mask"]);
    const auto found = std::ranges::find_if(set_, [&](const SwayBinding& one) {
        return static_cast<int>(one.keyCode) == binding["input_code"].toInt() && one.modifiers == modifiers
               && QString::fromStdString(one.action()) == binding["command"].toString();
    });
    // A copy: who is told may replace what is set.
    if (found != set_.end()) emit pressed(SwayBinding(*found));
}

bool SwayKeyBindings::set(const std::vector<SwayBinding>& wanted) {
    const std::vector<SwayBinding> before = std::exchange(set_, wanted);
    const std::set<std::string> mayBeBound = std::exchange(bound_, {});
    std::string commands;
    for (const SwayBinding& binding : wanted) {
        bound_.insert(binding.combination());
        if (std::ranges::find(before, binding) == before.end()) commands += binding.command() + "; ";
    }
    for (const std::string& combination : mayBeBound)
        if (!bound_.contains(combination)) commands += "unbindcode " + combination + "; ";
    if (commands.empty()) return true;
    const std::set<std::string> afterwards = bound_;
    bound_.insert(mayBeBound.begin(), mayBeBound.end());
    leftovers_.write(bound_);
    if (!run(commands)) {
        set_.clear();
        return false;
    }
    bound_ = afterwards;
    leftovers_.write(bound_);
    return true;
}

/// Binds in the usual mode, whichever is in use: what is bound is bound in that
/// one, and only there it can be taken back.
bool SwayKeyBindings::run(const std::string& commands) {
    const char quote = mode_.find('"') == std::string::npos ? '"' : '\'';
    std::string text = commands;
    if (mode_ != usualMode) text = std::string("mode ") + usualMode + "; " + commands + "mode " + quote + mode_ + quote;
    const SwitchWait wait;
    return exchange({{Request::runCommand, text}}, wait.deadline()).has_value();
}

std::optional<ReservedKeys> SwayKeyBindings::reserved() {
    const SwitchWait wait;
    const auto replies = exchange({{Request::getVersion, {}}, {Request::getConfig, {}}}, wait.deadline());
    if (!replies) return std::nullopt;
    return swayAnswers::reservedKeys(replies->front(), replies->back());
}

std::optional<ReservedKeys> SwayKeyBindings::reservedAt(const std::string& socket) {
    const std::unique_ptr<SwayConnection> connection = SwayConnection::open(socket);
    if (!connection) return std::nullopt;
    const std::vector<SwayConnection::Message> questions{{Request::getVersion, {}}, {Request::getConfig, {}}};
    const auto replies = connection->exchange(questions, Clock::now() + patienceAtStart);
    if (!replies || !swayAnswers::canBind(replies->front())) return std::nullopt;
    return swayAnswers::reservedKeys(replies->front(), replies->back());
}

/// Events that come with the replies are read with them, and nothing else would
/// call for them.
std::optional<std::vector<QByteArray>> SwayKeyBindings::exchange(const std::vector<SwayConnection::Message>& messages,
                                                                 Clock::time_point deadline) {
    if (!connection_) return std::nullopt;
    auto replies = connection_->exchange(messages, deadline);
    if (connection_->hasEvents()) QMetaObject::invokeMethod(this, &SwayKeyBindings::takeEvents, Qt::QueuedConnection);
    return replies;
}

}  // namespace quillmere
