#include "Quillmere/Plate/SwitchHUD.h"
