#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include "Quillmere/Platform/Memory.h"

#include <xkbcommon/xkbregistry.h>

#include <algorithm>
#include <memory>

#include <libintl.h>

namespace quillmere {

namespace {

struct ContextDeleter {
    void operator()(rxkb_context* context) const { rxkb_context_unref(context); }
};
using Context = std::unique_ptr<rxkb_context, ContextDeleter>;

std::string textOf(const char* text) {
    return text == nullptr ? std::string{} : std::string(text);
}

XkbLayoutDescription describeEntry(rxkb_layout* entry) {
    XkbLayoutDescription description{.name = textOf(rxkb_layout_get_description(entry)), .languages = {}};
    for (auto* code = rxkb_layout_get_iso639_first(entry); code != nullptr; code = rxkb_iso639_code_next(code))
        description.languages.push_back(textOf(rxkb_iso639_code_get_code(code)));
    return description;
}

/// The list puts a backslash before the bar in a name, the keymap does not.
std::string nameInKeymap(std::string name) {
    std::erase(name, '\\');
    return name;
}

/// The name in the user's language, as the desktops show it, too: the list's
/// own translations.
std::string translated(const std::string& name) {
    return nameInKeymap(dgettext("xkeyboard-config", name.c_str()));
}

template <typename Known, typename Keys>
bool areAllIn(const Known& known, const Keys& keys) {
    return std::ranges::all_of(keys, [&](const auto& key) { return known.contains(key); });
}

}  // namespace

std::string XkbLayout::id() const {
    return variant.empty() ? "xkb:" + layout : "xkb:" + layout + "+" + variant;
}

template <typename Known, typename Keys>
std::vector<typename Known::mapped_type> XkbLayoutRegistry::lookUp(Known& known, const Keys& keys) {
    if (!areAllIn(known, keys)) {
        learn(keys, Part::main);
        if (!areAllIn(known, keys)) learn(keys, Part::withRare);
        // The list is a document of some megabytes, read for a few names.
        giveBackMemory();
    }
    std::vector<typename Known::mapped_type> result;
    result.reserve(keys.size());
    for (const auto& key : keys)
        // What both parts lack is remembered as such, so that it is not looked for again.
        result.push_back(known[key]);
    return result;
}

std::vector<std::optional<XkbLayoutDescription>> XkbLayoutRegistry::describe(const std::string& rules,
                                                                             const std::vector<XkbLayout>& layouts) {
    if (rules != rules_) known_.clear();
    rules_ = rules;
    return lookUp(known_, layouts);
}

std::vector<std::optional<XkbListedLayout>> XkbLayoutRegistry::named(const std::vector<std::string>& names) {
    return lookUp(knownNames_, names);
}

std::vector<std::optional<XkbListedLayout>> XkbLayoutRegistry::labelled(const std::vector<XkbLabel>& labels) {
    return lookUp(knownLabels_, labels);
}

void XkbLayoutRegistry::learn(const std::vector<XkbLayout>& layouts, Part part) {
    read(rules_, part, [&](const XkbListedLayout& listed) {
        if (std::ranges::find(layouts, listed.layout) != layouts.end())
            known_.try_emplace(listed.layout, listed.description);
    });
}

void XkbLayoutRegistry::learn(const std::vector<std::string>& names, Part part) {
    read({}, part, [&](const XkbListedLayout& listed) {
        const std::string name = nameInKeymap(listed.description.name);
        if (std::ranges::find(names, name) != names.end()) knownNames_.try_emplace(name, listed);
    });
}

void XkbLayoutRegistry::learn(const std::vector<XkbLabel>& labels, Part part) {
    read({}, part, [&](const XkbListedLayout& listed) {
        const std::string english = nameInKeymap(listed.description.name);
        const std::string local = translated(listed.description.name);
        for (const XkbLabel& label : labels) {
            const bool canBe = label.layout.empty() || label.layout == listed.layout.layout;
            if (canBe && (label.text == english || label.text == local)) knownLabels_.try_emplace(label, listed);
        }
    });
}

void XkbLayoutRegistry::read(const std::string& rules, Part part, const Visitor& visit) {
    const Context context(
        rxkb_context_new(part == Part::main ? RXKB_CONTEXT_NO_FLAGS : RXKB_CONTEXT_LOAD_EXOTIC_RULES));
    if (context == nullptr) return;
    rxkb_context_set_log_level(context.get(), RXKB_LOG_LEVEL_CRITICAL);
    const bool isRead = rules.empty() ? rxkb_context_parse_default_ruleset(context.get())
                                      : rxkb_context_parse(context.get(), rules.c_str());
    if (!isRead) return;
    for (auto* entry = rxkb_layout_first(context.get()); entry != nullptr; entry = rxkb_layout_next(entry))
        visit({{textOf(rxkb_layout_get_name(entry)), textOf(rxkb_layout_get_variant(entry))}, describeEntry(entry)});
}

}  // namespace quillmere
