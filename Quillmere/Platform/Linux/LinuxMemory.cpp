#include "Quillmere/Platform/Memory.h"

#include <malloc.h>

namespace quillmere {

void giveBackMemory() {
    malloc_trim(0);
}

}  // namespace quillmere
