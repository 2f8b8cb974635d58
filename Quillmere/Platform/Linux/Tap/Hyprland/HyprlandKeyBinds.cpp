#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandKeyBinds.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBindList.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

constexpr auto patienceAtStart = 3s;

constexpr const char* listQuestion = "j/binds";

// Where there is no Lua it is answered with a sentence.
constexpr const char* clearLua = "eval for _, bind in pairs(quillmere or {}) do bind:remove() end quillmere = {}";

}  // namespace

std::unique_ptr<HyprlandKeyBinds> HyprlandKeyBinds::create(const std::string& folder) {
    if (folder.empty()) return nullptr;
    std::unique_ptr<HyprlandKeyBinds> binds(new HyprlandKeyBinds(folder));
    // Takes back what was left.
    if (!binds->open() || !binds->clear(Clock::now() + patienceAtStart)) return nullptr;
    return binds;
}

HyprlandKeyBinds::~HyprlandKeyBinds() {
    set({});
}

bool HyprlandKeyBinds::open() {
    // Its signal may be what has called.
    if (events_) events_.release()->deleteLater();
    events_ = HyprlandEvents::open(folder_, {"custom", "configreloaded"});
    if (!events_) return false;
    connect(events_.get(), &HyprlandEvents::came, this, &HyprlandKeyBinds::takeEvents);
    return true;
}

void HyprlandKeyBinds::takeEvents() {
    bool isForgotten = false;
    for (const HyprlandEvents::Event& event : events_->take()) {
        isForgotten = isForgotten || event.name == "configreloaded";
        const auto found = std::ranges::find(set_, event.data, &HyprlandBind::event);
        // A copy: who is told may replace what is set.
        if (event.name == "custom" && found != set_.end()) emit pressed(HyprlandBind(*found));
    }
    // It closes the connection of a program that has not read for long.
    if (events_->isLost()) isForgotten = open();
    if (!isForgotten) return;
    isKnown_ = false;
    emit forgotten();
}

bool HyprlandKeyBinds::set(const std::vector<HyprlandBind>& wanted) {
    if (isKnown_ && wanted == set_) return true;
    const SwitchWait wait;
    const auto deadline = wait.deadline();
    if (!isKnown_ && !clear(deadline)) return false;
    // A request that is not answered may have been done, or still be.
    isKnown_ = apply(wanted, deadline);
    return isKnown_;
}

bool HyprlandKeyBinds::apply(const std::vector<HyprlandBind>& wanted, Clock::time_point deadline) {
    const std::vector<HyprlandBind> before = std::exchange(set_, wanted);
    const auto isIn = [](const std::vector<HyprlandBind>& binds) {
        return [&](const HyprlandBind& bind) { return std::ranges::find(binds, bind) != binds.end(); };
    };
    return std::ranges::all_of(before,
                               [&](const HyprlandBind& each) { return isIn(wanted)(each) || unbind(each, deadline); })
           && std::ranges::all_of(wanted,
                                  [&](const HyprlandBind& each) { return isIn(before)(each) || bind(each, deadline); });
}

/// Takes back all that this program, or one before it, has bound.
bool HyprlandKeyBinds::clear(Clock::time_point deadline) {
    set_.clear();
    refused_.clear();
    const std::optional<QByteArray> answer = requests_.ask(clearLua, deadline);
    if (!answer) return false;
    language_ = *answer == "ok" ? Language::lua : Language::keywords;
    isKnown_ = language_ == Language::lua || clearKeywords(deadline);
    return isKnown_;
}

bool HyprlandKeyBinds::clearKeywords(Clock::time_point deadline) {
    const std::optional<QByteArray> answer = requests_.ask(listQuestion, deadline);
    const auto list = answer ? HyprlandBindList::parse(*answer) : std::nullopt;
    return list && std::ranges::all_of(list->own, [&](const HyprlandBind& each) { return unbind(each, deadline); });
}

bool HyprlandKeyBinds::bind(const HyprlandBind& bind, Clock::time_point deadline) {
    const auto answer = requests_.ask(language_ == Language::lua ? bind.lua() : bind.keyword(), deadline);
    if (answer && *answer != "ok") refused_.push_back(bind);
    return answer.has_value();
}

/// What is refused is not there any more.
bool HyprlandKeyBinds::unbind(const HyprlandBind& bind, Clock::time_point deadline) {
    return requests_.ask(language_ == Language::lua ? bind.unbindLua() : bind.unbindKeyword(), deadline).has_value();
}

bool HyprlandKeyBinds::isRefused() const {
    return std::ranges::any_of(
        set_, [this](const HyprlandBind& each) { return std::ranges::find(refused_, each) != refused_.end(); });
}

std::optional<ReservedKeys> HyprlandKeyBinds::reserved() {
    const SwitchWait wait;
    const std::optional<QByteArray> answer = requests_.ask(listQuestion, wait.deadline());
    auto list = answer ? HyprlandBindList::parse(*answer) : std::nullopt;
    if (!list) return std::nullopt;
    return ReservedKeys(std::move(list->others));
}

std::optional<ReservedKeys> HyprlandKeyBinds::reservedAt(const std::string& folder) {
    if (folder.empty()) return std::nullopt;
    const std::optional<QByteArray> answer = HyprlandRequests(folder).ask(listQuestion, Clock::now() + patienceAtStart);
    auto list = answer ? HyprlandBindList::parse(*answer) : std::nullopt;
    if (!list) return std::nullopt;
    return ReservedKeys(std::move(list->others));
}

}  // namespace quillmere
