#pragma once

#include "Quillmere/Platform/Examination.h"

#include <filesystem>

namespace quillmere {

/// What the program would find in this store. It is read in a copy, by the
/// program's own part, which sets a damaged one aside and begins another.
Examination::Stored storedIn(const std::filesystem::path& file);

}  // namespace quillmere
