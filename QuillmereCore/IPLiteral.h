#pragma once

#include <string_view>

namespace quillmere {

/// Whether `text` is what a web address may hold between "[" and "]" for its
/// host (RFC 3986, 3.2.2): an IPv6 address, its last four bytes perhaps in
/// IPv4's form, or an address of a later version ("v1.x"). An address with a
/// zone ("fe80::1%eth0") names something on this computer, not on the web, and
/// is none.
bool isIPLiteral(std::string_view text);

}  // namespace quillmere
