// Declared anew from the public documentation, see CoreFoundation.h.
#pragma once

#include <cstddef>

extern "C" {

using malloc_zone_t = struct _malloc_zone_t;

std::size_t malloc_zone_pressure_relief(malloc_zone_t* zone, std::size_t goal);

}  // extern "C"
