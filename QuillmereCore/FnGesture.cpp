#include "QuillmereCore/FnGesture.h"
