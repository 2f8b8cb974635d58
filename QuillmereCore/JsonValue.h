#pragma once

#include <boost/json/value.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::json {

/// The deepest nesting of arrays and objects that `parse` accepts: what Apple's
/// own JSON coders take, too. The document's reader, copies and end recurse as
/// deep, for which a thread's smallest stack (512 KiB) has room.
inline constexpr std::size_t maximumDepth = 512;

/// Parses one UTF-8 JSON document strictly (no comments, no trailing commas,
/// no text after the document). No value for anything else: bad syntax,
/// invalid UTF-8, an escape that is half of a surrogate pair, nesting deeper
/// than `maximumDepth`. Of duplicate keys in one object the last wins. A number
/// with a fraction or an exponent is the nearest double: one too large for a
/// double is an infinity and fails nothing by itself. Never throws.
std::optional<boost::json::value> parse(std::string_view bytes);

/// The member `key` of a JSON object; null when `json` is no object or has no
/// such member. Owned by `json`.
const boost::json::value* member(const boost::json::value& json, std::string_view key);

/// A JSON number as a signed 64-bit integer: a number written with a fraction
/// or an exponent counts when its value is whole and fits (12.0 is 12; 12.5
/// and 1e400 are no value).
std::optional<std::int64_t> integer(const boost::json::value& json);

/// A JSON string; no value for any other type.
std::optional<std::string> string(const boost::json::value& json);

/// A JSON array of nothing but strings, in its order; no value for anything else.
std::optional<std::vector<std::string>> strings(const boost::json::value& json);

}  // namespace quillmere::json
