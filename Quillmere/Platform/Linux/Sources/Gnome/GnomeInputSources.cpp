#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeInputSources.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtensionSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsHelper.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSourceIDs.h"
#include "Quillmere/Platform/Linux/Sources/LanguageCode.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

constexpr int statusSwitched = 0;
constexpr int statusRefused = 1;

constexpr std::string_view layoutType = "xkb";

/// Nobody asks the shell itself anything, but whether it is there.
BusService::Address shell() {
    return {.name = QStringLiteral("org.gnome.Shell"),
            .path = QStringLiteral("/org/gnome/Shell"),
            .interface = QStringLiteral("org.freedesktop.DBus.Peer"),
            .harmlessMethod = QStringLiteral("Ping")};
}

XkbLayout layoutOf(const std::string& id) {
    const std::size_t plus = id.find('+');
    if (plus == std::string::npos) return {.layout = id, .variant = {}};
    return {.layout = id.substr(0, plus), .variant = id.substr(plus + 1)};
}

}  // namespace

GnomeInputSources::GnomeInputSources(const QDBusConnection& bus, std::vector<std::unique_ptr<GnomeSourceAccess>> ways)
    : shell_(bus, shell(), SwitchWait().deadline()), ways_(std::move(ways)) {}

std::unique_ptr<GnomeInputSources> GnomeInputSources::create() {
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return nullptr;
    std::vector<std::unique_ptr<GnomeSourceAccess>> ways;
    ways.push_back(std::make_unique<GnomeExtensionSources>(bus));
    ways.push_back(std::make_unique<GnomeSettingsSources>(GnomeSettingsHelper::standardProgram()));
    return std::make_unique<GnomeInputSources>(bus, std::move(ways));
}

std::vector<InputSourceRecord> GnomeInputSources::sources() {
    std::vector<InputSourceRecord> records;
    if (const std::optional<GnomeSources> answer = ask())
        std::ranges::transform(answer->list, std::back_inserter(records),
                               [this](const GnomeListedSource& listed) { return recordOf(listed); });
    return records;
}

std::optional<std::string> GnomeInputSources::currentID() {
    const std::optional<GnomeSources> answer = ask();
    if (!answer || answer->current >= answer->list.size()) return std::nullopt;
    return gnomeSourceIDs::idOf(answer->list[answer->current].source);
}

int GnomeInputSources::select(const InputSourceRecord& source) {
    const auto wanted = gnomeSourceIDs::sourceOf(source.id.value_or(std::string()));
    GnomeSourceAccess* const access = way();
    if (!wanted || access == nullptr || !access->activate(*wanted)) return statusRefused;
    return currentID() == source.id ? statusSwitched : statusRefused;
}

GnomeSourceAccess* GnomeInputSources::way() const {
    if (!shell_.isOwned()) return nullptr;
    const auto found = std::ranges::find_if(ways_, [](const auto& way) { return way->isAvailable(); });
    return found == ways_.end() ? nullptr : found->get();
}

std::optional<GnomeSources> GnomeInputSources::ask() const {
    GnomeSourceAccess* const access = way();
    return access == nullptr ? std::nullopt : access->sources();
}

InputSourceRecord GnomeInputSources::recordOf(const GnomeListedSource& listed) {
    InputSourceRecord record{.id = gnomeSourceIDs::idOf(listed.source), .localizedName = std::nullopt};
    const bool isLayout = listed.source.type == layoutType;
    record.type = isLayout ? InputSourceType::keyboardLayout : InputSourceType::keyboardInputMode;
    if (!listed.name.empty()) record.localizedName = listed.name;
    if (isLayout) {
        const auto described = registry_.describe({}, {layoutOf(listed.source.id)}).front();
        if (described && listed.name.empty()) record.localizedName = described->name;
        if (described) record.languages = described->languages;
    }
    if (record.languages.empty() && !listed.language.empty()) record.languages = {languageCode(listed.language)};
    return record;
}

}  // namespace quillmere
