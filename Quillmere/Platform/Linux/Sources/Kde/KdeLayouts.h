#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QVariant>

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// One layout as KDE lists it.
struct KdeLayout {
    std::string layout;  ///< "us"; empty where the desktop follows the system's own setting
    std::string name;    ///< "English (Dvorak)", in the user's language

    friend bool operator==(const KdeLayout&, const KdeLayout&) = default;
};

namespace KdeLayouts {

/// Reads the answer to getLayoutsList (an array of three texts each: layout,
/// label, name); absent when it is something else.
std::optional<std::vector<KdeLayout>> parse(const QVariant& answer);

/// What the program makes of the list: a record for each layout, in its order.
/// KDE tells no variant, so it is found by the name. A layout whose name no
/// list has is known by its XKB name if that is the only one of the list, else
/// by what KDE calls it ("kde:…").
std::vector<InputSourceRecord> records(const std::vector<KdeLayout>& layouts, XkbLayoutRegistry& registry);

}  // namespace KdeLayouts

}  // namespace quillmere
