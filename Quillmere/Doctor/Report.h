#pragma once

#include "Quillmere/Platform/Finding.h"

#include <string>
#include <vector>

namespace quillmere {

/// The rows as one page of text, UTF-8: subjects in a column, what they are
/// beside it, and what to do below, behind an arrow.
std::string report(const std::vector<Finding>& rows);

}  // namespace quillmere
