#include "Quillmere/Platform/Linux/Sources/Kde/KdeInputSources.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

const QString getLayout = QStringLiteral("getLayout");

BusService::Address address() {
    return {.name = QStringLiteral("org.kde.keyboard"),
            .path = QStringLiteral("/Layouts"),
            .interface = QStringLiteral("org.kde.KeyboardLayouts"),
            .harmlessMethod = getLayout};
}

/// The index in the answer to getLayout; absent when there is none.
std::optional<unsigned int> indexIn(const QVariantList& answer) {
    bool isNumber = false;
    const unsigned int index = answer.value(0).toUInt(&isNumber);
    if (!isNumber) return std::nullopt;
    return index;
}

}  // namespace

KdeInputSources::KdeInputSources(const QDBusConnection& bus) : service_(bus, address(), SwitchWait().deadline()) {}

std::unique_ptr<KdeInputSources> KdeInputSources::create() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() ? std::make_unique<KdeInputSources>(bus) : nullptr;
}

std::vector<InputSourceRecord> KdeInputSources::sources() {
    if (!askForLayouts({})) return {};
    return records_;
}

std::optional<std::string> KdeInputSources::currentID() {
    if (!askForLayouts({{getLayout, {}}})) return std::nullopt;
    const std::optional<unsigned int> index = indexIn(answers_.front());
    if (!index || *index >= records_.size()) return std::nullopt;
    return records_[*index].id;
}

int KdeInputSources::select(const InputSourceRecord& source) {
    if (!source.id) return statusRefused;
    // A second time in case the list was another than it seemed.
    constexpr int attempts = 2;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // The daemon of X11 takes any number, wraps it, and calls that success.
        const std::optional<unsigned int> index = indexOf(*source.id);
        if (!askForLayouts(index
                               ? std::vector<BusService::Call>{{QStringLiteral("setLayout"), {*index}}, {getLayout, {}}}
                               : std::vector<BusService::Call>{}))
            return statusRefused;
        // The index means what it did only if the list is still the same.
        if (index && indexOf(*source.id) == index && indexIn(answers_[1]) == index) return statusSwitched;
    }
    return statusRefused;
}

/// Makes the calls, and asks for the list after them; false when it has not
/// come to that.
bool KdeInputSources::askForLayouts(std::vector<BusService::Call> calls) {
    calls.push_back({QStringLiteral("getLayoutsList"), {}});
    const SwitchWait wait;
    auto answers = service_.call(calls, wait.deadline());
    if (!answers || !takeIn(answers->back())) return false;
    answers_ = *std::move(answers);
    return true;
}

bool KdeInputSources::takeIn(const QVariantList& layouts) {
    auto read = KdeLayouts::parse(layouts.value(0));
    if (!read) return false;
    if (*read == layouts_) return true;
    layouts_ = *std::move(read);
    records_ = KdeLayouts::records(layouts_, registry_);
    return true;
}

std::optional<unsigned int> KdeInputSources::indexOf(const std::string& id) const {
    const auto found = std::ranges::find(records_, id, &InputSourceRecord::id);
    if (found == records_.end()) return std::nullopt;
    return static_cast<unsigned int>(found - records_.begin());
}

}  // namespace quillmere
