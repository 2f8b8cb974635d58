#pragma once

#include "QuillmereCore/PlateSettings.h"
#include "QuillmereCore/Shortcut.h"

#include <boost/json/value.hpp>
#include <boost/uuid/uuid.hpp>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

using UUID = boost::uuids::uuid;

/// A fresh random identifier.
UUID makeUUID();

/// One input source as the platform reports it. Never stored.
struct SourceInfo {
    std::string id;        ///< the platform's identifier, the key of a source everywhere
    std::string name;      ///< UTF-8 display name
    std::string language;  ///< ISO language code, or empty

    friend bool operator==(const SourceInfo&, const SourceInfo&) = default;
};

/// Binds one optional shortcut to an ordered list of input sources.
struct CycleGroup {
    UUID id{};                           ///< all zeros until given
    std::optional<Shortcut> shortcut;    ///< absent: not recorded yet, never fires
    std::vector<std::string> sourceIDs;  ///< in cycling order; empty: never fires

    /// The source that follows `current` (wrapping; by its first occurrence),
    /// or the first source when `current` is absent or not in the group.
    /// Absent only for a group with no sources.
    std::optional<std::string> next(const std::optional<std::string>& current) const;

    friend bool operator==(const CycleGroup&, const CycleGroup&) = default;
};

/// The whole persisted configuration. A value.
struct Config {
    bool active = true;  ///< master switch: while false no group fires
    std::vector<CycleGroup> groups;
    PlateSettings plate;

    /// The first group, in list order, that has this very shortcut and at
    /// least one source; null when there is none or switching is off. The
    /// group belongs to this configuration. Does not allocate.
    const CycleGroup* group(const Shortcut& shortcut) const;

    /// The source to select when `shortcut` is pressed while `current` is
    /// selected; absent when no group matches.
    std::optional<std::string> target(const Shortcut& shortcut, const std::optional<std::string>& current) const;

    /// What applies on first start: one active group bound to Fn alone with
    /// every available source.
    static Config defaults(std::span<const SourceInfo> available);

    friend bool operator==(const Config&, const Config&) = default;
};

/// JSON form: {"id", "shortcut"?, "sourceIDs"}, the identifier in upper case.
/// Always valid UTF-8: where a source identifier is not valid UTF-8, each byte
/// that belongs to no character is written as U+FFFD, so that one odd
/// identifier cannot make a whole configuration unreadable.
boost::json::value encode(const CycleGroup& group);

/// Reads the JSON form, strictly; the identifier in its 8-4-4-4-12 form only, in
/// either case. No value when something is missing or of the wrong type.
std::optional<CycleGroup> decodeCycleGroup(const boost::json::value& json);

/// The configuration as compact UTF-8 JSON: {"active", "groups", "plate"}.
std::string encodeConfig(const Config& config);

/// Reads that JSON. Strict for "active", "groups" and each group (one bad
/// group fails the whole), forgiving inside "plate". No value for anything that
/// is not a configuration, whatever the bytes; never throws.
std::optional<Config> decodeConfig(std::string_view bytes);

}  // namespace quillmere
