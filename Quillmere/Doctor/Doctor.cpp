#include "Quillmere/Doctor/Doctor.h"

#include "Quillmere/Switching/InputSources.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace quillmere {

namespace {

void append(std::vector<Finding>& rows, std::vector<Finding> more) {
    std::ranges::move(more, std::back_inserter(rows));
}

void appendLine(std::string& text, const std::string& line) {
    if (!text.empty()) text += '\n';
    text += line;
}

std::string nameOf(const std::optional<Shortcut>& shortcut) {
    return shortcut ? shortcut->displayString() : "no shortcut";
}

/// Each group with its shortcut and its layouts, and which of them nobody has.
Finding groupsOf(const Config& config, const std::vector<SourceInfo>& available) {
    Finding row{.subject = "Groups", .state = {}, .advice = {}};
    for (const CycleGroup& group : config.groups) {
        std::string line = nameOf(group.shortcut) + ":";
        for (const std::string& id : group.sourceIDs) {
            const bool isThere = std::ranges::find(available, id, &SourceInfo::id) != available.end();
            line += " " + id;
            if (!isThere) line += " (not there)";
            if (!isThere) row.advice = "Add the layout in the desktop's settings, or take it out of the group.";
        }
        if (group.sourceIDs.empty()) {
            line += " no layouts";
            row.advice = "Put layouts into the group, in Quillmere's settings.";
        }
        appendLine(row.state, line);
    }
    if (config.groups.empty()) row = {"Groups", "none", "Make a group in Quillmere's settings."};
    if (!config.active) {
        appendLine(row.state, "switching is turned off");
        row.advice = "Turn \"Active\" on, in the menu in the tray or in the settings.";
    }
    return row;
}

/// The shortcuts that can fire.
std::vector<Shortcut> shortcutsOf(const Config& config) {
    std::vector<Shortcut> result;
    for (const CycleGroup& group : config.groups)
        if (group.shortcut) result.push_back(*group.shortcut);
    return result;
}

}  // namespace

Doctor::Doctor(Examination& examination, AskFeed askFeed) : examination_(examination), askFeed_(std::move(askFeed)) {}

std::vector<Finding> Doctor::examine(bool tries) {
    const Examination::Stored stored = examination_.stored();
    const std::vector<SourceInfo> available = InputSources(examination_.inputSources()).available();
    const Config config = stored.config ? *stored.config : Config::defaults(available);

    const std::string version = examination_.bundle().string("CFBundleShortVersionString").value_or("unknown");
    std::vector<Finding> rows{{.subject = "Version", .state = version, .advice = {}}};
    append(rows, examination_.session());
    append(rows, examination_.keyboard(shortcutsOf(config)));
    rows.push_back(layouts(available, tries));
    rows.push_back(groupsOf(config, available));
    rows.push_back(stored.finding);
    append(rows, examination_.surroundings());
    rows.push_back(feed(tries));
    return rows;
}

Finding Doctor::layouts(const std::vector<SourceInfo>& available, bool tries) {
    const InputSources sources(examination_.inputSources());
    const std::optional<std::string> current = sources.currentID();
    Finding row{.subject = "Layouts", .state = {}, .advice = {}};
    for (const SourceInfo& source : available) {
        std::string line = source.id + "  ";
        line += source.name;
        if (source.id == current) line += "  (in use)";
        if (tries) {
            const bool isSelected = sources.select(source.id) && sources.currentID() == source.id;
            line += isSelected ? "  selected" : "  REFUSED";
            if (!isSelected)
                row.advice = "Choose the layout by the desktop's own means; if that works, report this page.";
        }
        appendLine(row.state, line);
    }
    if (tries && current) sources.select(*current);
    if (available.empty()) return {"Layouts", "none found", "Add layouts in the desktop's keyboard settings."};
    if (available.size() == 1) row.advice = "There is nothing to switch to: add a layout in the desktop's settings.";
    return row;
}

Finding Doctor::feed(bool tries) {
    const auto checker = UpdateChecker::configured(examination_.bundle());
    if (!checker) return {"Updates", "no feed is named: nobody is asked for updates", {}};
    Finding row{.subject = "Updates", .state = checker->feedURL.text(), .advice = {}};
    if (!tries) return row;
    const UpdateResult result = askFeed_(*checker);
    if (const std::string* failure = result.failure()) {
        appendLine(row.state, *failure);
        row.advice = "Look whether a browser can open the address.";
    } else {
        appendLine(row.state, result.isUpToDate() ? "this is the newest version"
                                                  : "there is version " + result.offer()->version.description());
    }
    return row;
}

}  // namespace quillmere
