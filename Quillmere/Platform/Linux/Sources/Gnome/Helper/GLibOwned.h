#pragma once

#include <gio/gio.h>

#include <memory>

namespace quillmere::gnomehelper {

struct ObjectDeleter {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using OwnedSettings = std::unique_ptr<GSettings, ObjectDeleter>;
using OwnedConnection = std::unique_ptr<GDBusConnection, ObjectDeleter>;

struct VariantDeleter {
    void operator()(GVariant* variant) const { g_variant_unref(variant); }
};
using OwnedVariant = std::unique_ptr<GVariant, VariantDeleter>;

}  // namespace quillmere::gnomehelper
