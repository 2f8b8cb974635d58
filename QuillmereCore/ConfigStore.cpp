#include "QuillmereCore/ConfigStore.h"
