#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/InputSourceSettings.h"

namespace quillmere::gnomehelper {

namespace {

constexpr const char* schemaName = "org.gnome.desktop.input-sources";

/// The library ends a program that asks for one that is not installed.
bool hasSchema() {
    GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
    if (source == nullptr) return false;
    GSettingsSchema* const schema = g_settings_schema_source_lookup(source, schemaName, TRUE);
    if (schema == nullptr) return false;
    g_settings_schema_unref(schema);
    return true;
}

/// Without an owner, as the settings take it.
GVariant* variantOf(const GnomeSourceList& list) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(ss)"));
    for (const GnomeSource& source : list)
        g_variant_builder_add(&builder, "(ss)", source.type.c_str(), source.id.c_str());
    return g_variant_builder_end(&builder);
}

}  // namespace

std::unique_ptr<InputSourceSettings> InputSourceSettings::open() {
    if (!hasSchema()) return nullptr;
    return std::unique_ptr<InputSourceSettings>(new InputSourceSettings);
}

InputSourceSettings::InputSourceSettings() : reader_(g_settings_new(schemaName)), writer_(g_settings_new(schemaName)) {
    g_settings_delay(writer_.get());
}

bool InputSourceSettings::isWritable() const {
    return g_settings_is_writable(reader_.get(), sourcesKey) != FALSE;
}

void InputSourceSettings::write(const GnomeSourceList& sources, const GnomeSourceList* recent) {
    g_settings_set_value(writer_.get(), sourcesKey, variantOf(sources));
    if (recent != nullptr) g_settings_set_value(writer_.get(), recentKey, variantOf(*recent));
    g_settings_apply(writer_.get());
    g_settings_sync();
}

GnomeSourceList InputSourceSettings::read(const char* key) const {
    const OwnedVariant value(g_settings_get_value(reader_.get(), key));
    GnomeSourceList list;
    const gsize count = g_variant_n_children(value.get());
    for (gsize i = 0; i < count; ++i) {
        const char* type = nullptr;
        const char* id = nullptr;
        g_variant_get_child(value.get(), i, "(&s&s)", &type, &id);
        list.push_back({type, id});
    }
    return list;
}

}  // namespace quillmere::gnomehelper
