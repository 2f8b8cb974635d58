#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandInputSources.h"

#include "Quillmere/Platform/Linux/LinuxSession.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

constexpr auto patienceAtStart = 3s;

}  // namespace

std::unique_ptr<HyprlandInputSources> HyprlandInputSources::create() {
    const std::string folder = LinuxSession::current().hyprlandFolder;
    if (folder.empty()) return nullptr;
    std::unique_ptr<HyprlandInputSources> sources(new HyprlandInputSources(folder));
    if (!sources->connect()) return nullptr;
    sources->refresh(Clock::now() + patienceAtStart);
    return sources;
}

HyprlandInputSources::~HyprlandInputSources() = default;

/// Again where the compositor has closed the connection.
bool HyprlandInputSources::connect() {
    // Whether it is lost shows only in reading.
    if (events_) takeEvents();
    if (events_ && !events_->isLost()) return true;
    // Its signal may be what has called.
    if (events_) events_.release()->deleteLater();
    events_ = HyprlandEvents::open(folder_, {"activelayout", "configreloaded"});
    if (!events_) {
        keyboards_ = {};
        current_.reset();
        return false;
    }
    QObject::connect(events_.get(), &HyprlandEvents::came, events_.get(), [this] {
        if (connect()) refresh(SwitchWait().deadline());
    });
    return true;
}

void HyprlandInputSources::takeEvents() {
    events_->receive();
    for (const HyprlandEvents::Event& event : events_->take()) {
        // The name of a layout may have a comma, that of a keyboard has none.
        const QByteArray keyboard = event.data.left(event.data.indexOf(','));
        if (event.name == "activelayout") switched_.insert(keyboard.toStdString());
    }
}

std::vector<InputSourceRecord> HyprlandInputSources::sources() {
    const SwitchWait wait;
    refresh(wait.deadline());
    const std::vector<XkbLayout>& layouts = keyboards_.layouts();
    const auto described = registry_.describe({}, layouts);
    std::vector<InputSourceRecord> records;
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        InputSourceRecord record{.id = layouts[i].id(), .localizedName = layouts[i].layout};
        record.type = InputSourceType::keyboardLayout;
        if (described[i]) {
            record.localizedName = described[i]->name;
            record.languages = described[i]->languages;
        }
        records.push_back(std::move(record));
    }
    return records;
}

std::optional<std::string> HyprlandInputSources::currentID() {
    const SwitchWait wait;
    if (!refresh(wait.deadline()) || !current_) return std::nullopt;
    return current_->id();
}

int HyprlandInputSources::select(const InputSourceRecord& source) {
    if (!source.id) return statusRefused;
    const SwitchWait wait;
    const auto deadline = wait.deadline();
    // A second time in case the list was another than it seemed.
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        const std::optional<XkbLayout> layout = layoutOf(*source.id);
        if (layout) put(*layout, deadline);
        if (!connect() || !read(deadline)) return statusRefused;
        if (!layout || !keyboards_.isInUse(*layout)) continue;
        current_ = layout;
        return statusSwitched;
    }
    return statusRefused;
}

/// Whatever is answered: what has come of it is read back.
void HyprlandInputSources::put(const XkbLayout& layout, Clock::time_point deadline) {
    const std::string request = keyboards_.request(layout);
    // Older versions take "all" for a keyboard's name.
    if (request.empty() || !ask({request}, deadline)) ask(keyboards_.requests(layout), deadline);
}

/// Whether all of them were done.
bool HyprlandInputSources::ask(const std::vector<std::string>& requests, Clock::time_point deadline) {
    return std::ranges::all_of(
        requests, [&](const std::string& request) { return requests_.ask(request, deadline) == QByteArray("ok"); });
}

/// Reads the keyboards, and brings new ones to the layout in use.
bool HyprlandInputSources::refresh(Clock::time_point deadline) {
    if (!connect()) return false;
    const HyprlandKeyboards before = keyboards_;
    const std::optional<XkbLayout> last = current_;
    if (!read(deadline)) return false;
    // At the start nothing is new.
    if (before.layouts().empty() || !last || !current_) return true;
    const auto requests = keyboards_.requests(*current_, keyboards_.newcomers(before));
    if (requests.empty()) return true;
    ask(requests, deadline);
    return read(deadline);
}

bool HyprlandInputSources::read(Clock::time_point deadline) {
    const std::optional<QByteArray> answer = requests_.ask("j/devices", deadline);
    if (!answer) return false;
    std::optional<HyprlandKeyboards> keyboards = HyprlandKeyboards::parse(*answer, registry_);
    if (!keyboards) return false;
    if (events_) takeEvents();
    const std::set<std::string> newcomers = keyboards->newcomers(keyboards_);
    keyboards_ = *std::move(keyboards);
    // What the user is typing on, if something switches a keyboard by itself.
    for (const std::string& name : std::exchange(switched_, {})) {
        const std::optional<XkbLayout> layout = keyboards_.current(name);
        if (layout && !newcomers.contains(name)) current_ = layout;
    }
    current_ = keyboards_.current(current_);
    return true;
}

std::optional<XkbLayout> HyprlandInputSources::layoutOf(const std::string& id) const {
    const std::vector<XkbLayout>& layouts = keyboards_.layouts();
    const auto found = std::ranges::find(layouts, id, &XkbLayout::id);
    if (found == layouts.end()) return std::nullopt;
    return *found;
}

}  // namespace quillmere
