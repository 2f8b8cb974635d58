#include "Quillmere/Platform/Memory.h"

#include <malloc/malloc.h>

namespace quillmere {

void giveBackMemory() {
    // Of every zone, as much as can be had.
    malloc_zone_pressure_relief(nullptr, 0);
}

}  // namespace quillmere
