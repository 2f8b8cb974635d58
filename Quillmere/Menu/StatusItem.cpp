#include "Quillmere/Menu/StatusItem.h"
