#include "QuillmereCore/PlateSettings.h"
