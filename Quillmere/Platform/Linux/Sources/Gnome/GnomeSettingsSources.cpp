#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsSources.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/ListJournalFile.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <charconv>
#include <filesystem>
#include <system_error>
#include <utility>

namespace quillmere {

GnomeSettingsSources::GnomeSettingsSources(std::string program) : helper_(std::move(program)) {
    std::error_code error;
    if (std::filesystem::exists(gnomehelper::listJournalFile(), error)) helper_.start();
}

std::optional<GnomeSources> GnomeSettingsSources::sources() {
    const SwitchWait wait;
    const std::optional<std::string> answer = helper_.ask(gnomehelper::askState, wait.deadline());
    if (!answer) return std::nullopt;
    GnomeSources result;
    const char* const end = answer->data() + answer->size();
    const auto [rest, error] = std::from_chars(answer->data(), end, result.current);
    if (error != std::errc() || rest == end) return std::nullopt;
    for (const GnomeSource& source : gnomehelper::listIn(std::string(rest + 1, end)))
        result.list.push_back({.source = source, .name = {}, .language = {}});
    return result;
}

bool GnomeSettingsSources::activate(const GnomeSource& source) {
    const SwitchWait wait;
    const std::string question = std::string(gnomehelper::askSelect) + '\n' + gnomehelper::textOf({source});
    return helper_.ask(question, wait.deadline()) == gnomehelper::done;
}

}  // namespace quillmere
