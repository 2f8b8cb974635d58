#include "Quillmere/Platform/Linux/Tap/LayoutKeymap.h"

#include <string_view>

#include <xkbcommon/xkbcommon.h>

namespace quillmere {

namespace {

constexpr std::string_view layoutPrefix = "xkb:";
// As many as a keymap can hold.
constexpr std::size_t maxLayouts = 4;

}  // namespace

void LayoutKeymap::Deleter::operator()(xkb_keymap* keymap) const {
    xkb_keymap_unref(keymap);
}

LayoutKeymap::LayoutKeymap(const std::vector<std::string>& sourceIDs) {
    std::string layouts;
    std::string variants;
    for (const std::string& id : sourceIDs) {
        if (!id.starts_with(layoutPrefix) || ids_.size() == maxLayouts) continue;
        if (!ids_.empty()) {
            layouts += ',';
            variants += ',';
        }
        const std::string_view name = std::string_view(id).substr(layoutPrefix.size());
        const std::size_t plus = name.find('+');
        layouts += name.substr(0, plus);
        if (plus != std::string_view::npos) variants += name.substr(plus + 1);
        ids_.push_back(id);
    }
    const std::unique_ptr<xkb_context, decltype(&xkb_context_unref)> context(xkb_context_new(XKB_CONTEXT_NO_FLAGS),
                                                                             xkb_context_unref);
    if (context == nullptr) return;
    xkb_context_set_log_level(context.get(), XKB_LOG_LEVEL_CRITICAL);
    const xkb_rule_names names{.rules = "evdev",
                               .model = "pc105",
                               .layout = ids_.empty() ? "us" : layouts.c_str(),
                               .variant = variants.c_str(),
                               .options = ""};
    keymap_.reset(xkb_keymap_new_from_names(context.get(), &names, XKB_KEYMAP_COMPILE_NO_FLAGS));
}

LayoutKeymap::~LayoutKeymap() = default;
LayoutKeymap::LayoutKeymap(LayoutKeymap&&) noexcept = default;
LayoutKeymap& LayoutKeymap::operator=(LayoutKeymap&&) noexcept = default;

}  // namespace quillmere
