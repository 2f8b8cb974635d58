#pragma once

#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QVariant>

#include <optional>
#include <string>
#include <vector>

namespace quillmere::ibusEngines {

/// What IBus tells of one of its engines.
struct Description {
    std::string engine;    ///< "hangul", "xkb:us::eng"
    std::string name;      ///< "Hangul"
    std::string language;  ///< ISO 639; empty where it tells none
    /// The keyboard's layout that it is typed with; absent where it takes any.
    std::optional<XkbLayout> layout;
};

/// The layout of an engine that is a plain keyboard: "us" with the variant
/// "dvorak" of "xkb:us:dvorak:eng"; absent for any other.
std::optional<XkbLayout> layoutOf(const std::string& engine);

/// The program's identifier of an engine: "xkb:us+dvorak" of
/// "xkb:us:dvorak:eng", else "ibus:hangul" of "hangul".
std::string idOf(const std::string& engine);

/// The language of a description: "zh" of "zh_CN"; empty for what IBus writes
/// of an engine that is for none, or for several.
std::string languageOf(const std::string& told);

/// Reads one engine in IBus's own form, a structure that begins with its class,
/// attachments, eight texts, its rank and four more texts; absent when it is something else.
std::optional<Description> description(const QVariant& answer);

/// Reads the answer to GetEnginesByNames, an array of such.
std::vector<Description> descriptions(const QVariant& answer);

/// Reads a list of engines' names among IBus's settings; empty when it is
/// something else.
std::vector<std::string> names(const QVariant& answer);

/// Reads a truth value among its settings; absent when it is something else.
std::optional<bool> truth(const QVariant& answer);

}  // namespace quillmere::ibusEngines
