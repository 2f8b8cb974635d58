#include "Quillmere/Menu/StatusIcon.h"
