#pragma once

#include "TapService/Budget.h"

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <unordered_map>

namespace quillmere::tap {

/// How many calls each connection on the bus may make. The same small amount
/// of work for every call, and of memory for all of them, whoever calls how
/// often.
class CallerBudgets {
public:
    /// Calls at once, and in each second after that: a program that waits for
    /// its permission makes one a second.
    static constexpr double burst = 32;
    static constexpr double perSecond = 8;
    /// Connections remembered. The bus gives a user 256; with more than are
    /// remembered, the one that was silent longest is forgotten.
    static constexpr std::size_t limit = 1024;

    /// Pays for one call of the connection with this unique name; false when
    /// it has made too many.
    bool spend(std::string_view caller, Time now);

private:
    struct Caller {
        std::string name;
        Budget budget;
    };

    std::list<Caller> callers_;  ///< the one that was silent longest first
    /// Refers to the names in `callers_`.
    std::unordered_map<std::string_view, std::list<Caller>::iterator> byName_;
};

}  // namespace quillmere::tap
