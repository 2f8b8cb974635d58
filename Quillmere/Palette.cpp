#include "Quillmere/Palette.h"
