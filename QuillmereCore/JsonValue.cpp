#include "QuillmereCore/JsonValue.h"
