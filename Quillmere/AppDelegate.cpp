#include "Quillmere/AppDelegate.h"
