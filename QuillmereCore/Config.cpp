#include "QuillmereCore/Config.h"
