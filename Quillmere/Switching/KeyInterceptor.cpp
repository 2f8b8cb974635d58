#include "Quillmere/Switching/KeyInterceptor.h"
