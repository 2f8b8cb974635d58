#include "QuillmereCore/Shortcut.h"
