#include "TapService/CallerBudgets.h"

namespace quillmere::tap {

bool CallerBudgets::spend(std::string_view caller, Time now) {
    const auto known = byName_.find(caller);
    if (known != byName_.end()) {
        callers_.splice(callers_.end(), callers_, known->second);
    } else {
        callers_.push_back({std::string(caller), Budget(burst, perSecond, now)});
        byName_.emplace(callers_.back().name, std::prev(callers_.end()));
    }
    if (callers_.size() > limit) {
        byName_.erase(callers_.front().name);
        callers_.pop_front();
    }
    return callers_.back().budget.spend(now);
}

}  // namespace quillmere::tap
