#include "QuillmereCore/PermissionGate.h"
