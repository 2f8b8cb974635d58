#include "Quillmere/Platform/Linux/Sources/Kde/KdeLayouts.h"

#include <QDBusArgument>

#include <algorithm>
#include <string_view>
#include <utility>

namespace quillmere::KdeLayouts {

namespace {

constexpr std::string_view unlistedPrefix = "kde:";

std::string idOfUnlisted(const KdeLayout& layout, const std::vector<KdeLayout>& all) {
    const auto count = std::ranges::count(all, layout.layout, &KdeLayout::layout);
    if (layout.layout.empty() || count > 1) return std::string(unlistedPrefix) + layout.name;
    return XkbLayout{.layout = layout.layout, .variant = {}}.id();
}

}  // namespace

std::optional<std::vector<KdeLayout>> parse(const QVariant& answer) {
    const auto argument = answer.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(sss)")) return std::nullopt;
    std::vector<KdeLayout> layouts;
    argument.beginArray();
    while (!argument.atEnd()) {
        QString layout;
        QString label;
        QString name;
        argument.beginStructure();
        argument >> layout >> label >> name;
        argument.endStructure();
        layouts.push_back({layout.toStdString(), name.toStdString()});
    }
    argument.endArray();
    return layouts;
}

std::vector<InputSourceRecord> records(const std::vector<KdeLayout>& layouts, XkbLayoutRegistry& registry) {
    std::vector<XkbLabel> labels;
    labels.reserve(layouts.size());
    for (const KdeLayout& layout : layouts)
        labels.push_back({layout.layout, layout.name});
    const auto listed = registry.labelled(labels);
    std::vector<InputSourceRecord> records;
    for (std::size_t i = 0; i < layouts.size(); ++i) {
        InputSourceRecord record{.id = std::nullopt, .localizedName = layouts[i].name};
        record.type = InputSourceType::keyboardLayout;
        record.id = listed[i] ? listed[i]->layout.id() : idOfUnlisted(layouts[i], layouts);
        if (listed[i]) record.languages = listed[i]->description.languages;
        records.push_back(std::move(record));
    }
    return records;
}

}  // namespace quillmere::KdeLayouts
