#include "Tests/Mac/Doubles/LoginItems.h"

#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <ServiceManagement/ServiceManagement.h>

namespace loginitems {

bool isRegistered = false;
bool needsApproval = false;
bool refuses = false;

void reset() {
    isRegistered = needsApproval = refuses = false;
}

}  // namespace loginitems

using namespace loginitems;

@implementation SMAppService
+ (SMAppService*)mainAppService {
    misuse::stopIf(macversion::major < 13, "login items before macOS 13");
    static SMAppService* const service = objects::everlasting([[SMAppService alloc] init]);
    return service;
}
- (SMAppServiceStatus)status {
    if (!isRegistered) return SMAppServiceStatusNotRegistered;
    return needsApproval ? SMAppServiceStatusRequiresApproval : SMAppServiceStatusEnabled;
}
- (BOOL)registerAndReturnError:(NSError**)error {
    if (!refuses) isRegistered = true;
    return !refuses;
}
- (BOOL)unregisterAndReturnError:(NSError**)error {
    if (!refuses) isRegistered = false;
    return !refuses;
}
@end
