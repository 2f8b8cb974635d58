#pragma once

#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/Linux/Sources/InputMethodFramework.h"

namespace quillmere {

/// Which framework of input methods runs beside the desktop, and whether it
/// answers; null for none.
Finding methodFinding(InputMethodFramework* framework);

}  // namespace quillmere
