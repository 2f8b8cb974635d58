#include "Quillmere/ConfigModel.h"
