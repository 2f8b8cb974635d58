#include "Quillmere/Platform/Linux/XkbLayoutRegistry.h"

#include <malloc.h>
#include <xkbcommon/xkbregistry.h>

#include <algorithm>
#include <memory>

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

}  // namespace

std::string XkbLayout::id() const {
    return variant.empty() ? "xkb:" + layout : "xkb:" + layout + "+" + variant;
}

std::vector<std::optional<XkbLayoutDescription>> XkbLayoutRegistry::describe(const std::string& rules,
                                                                             const std::vector<XkbLayout>& layouts) {
    if (rules != rules_) known_.clear();
    rules_ = rules;
    if (!areAllKnown(layouts)) {
        read(rules, layouts, Part::main);
        if (!areAllKnown(layouts)) read(rules, layouts, Part::withRare);
        // The registry is a document of some megabytes, read for a few names;
        // the allocator would keep them for the life of the process.
        malloc_trim(0);
    }
    std::vector<std::optional<XkbLayoutDescription>> result;
    result.reserve(layouts.size());
    for (const XkbLayout& layout : layouts)
        // What both parts lack is remembered as such, so that it is not looked for again.
        result.push_back(known_[layout]);
    return result;
}

bool XkbLayoutRegistry::areAllKnown(const std::vector<XkbLayout>& layouts) const {
    return std::ranges::all_of(layouts, [this](const XkbLayout& layout) { return known_.contains(layout); });
}

void XkbLayoutRegistry::read(const std::string& rules, const std::vector<XkbLayout>& layouts, Part part) {
    const Context context(
        rxkb_context_new(part == Part::main ? RXKB_CONTEXT_NO_FLAGS : RXKB_CONTEXT_LOAD_EXOTIC_RULES));
    if (context == nullptr) return;
    rxkb_context_set_log_level(context.get(), RXKB_LOG_LEVEL_CRITICAL);
    const bool isRead = rules.empty() ? rxkb_context_parse_default_ruleset(context.get())
                                      : rxkb_context_parse(context.get(), rules.c_str());
    if (!isRead) return;
    for (auto* entry = rxkb_layout_first(context.get()); entry != nullptr; entry = rxkb_layout_next(entry)) {
        const XkbLayout layout{textOf(rxkb_layout_get_name(entry)), textOf(rxkb_layout_get_variant(entry))};
        if (std::ranges::find(layouts, layout) != layouts.end()) known_.try_emplace(layout, describeEntry(entry));
    }
}

}  // namespace quillmere
