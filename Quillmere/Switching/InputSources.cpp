#include "Quillmere/Switching/InputSources.h"
