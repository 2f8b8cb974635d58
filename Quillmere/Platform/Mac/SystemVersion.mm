#include "Quillmere/Platform/Mac/SystemVersion.h"

#include <Foundation/Foundation.h>

namespace quillmere {

bool SystemVersion::isAtLeast(long major) {
    const NSOperatingSystemVersion version{major, 0, 0};
    return [NSProcessInfo.processInfo isOperatingSystemAtLeastVersion:version];
}

}  // namespace quillmere
