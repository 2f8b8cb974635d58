#pragma once

#include "Tests/Soak/Footprint.h"

#include <string>
#include <vector>

namespace quillmere::soak {

/// What is known of an hour of the played day when it is over and everything is
/// at rest.
struct Hour {
    std::string name;
    int switches = 0;
    int missed = 0;  ///< of them: another layout came, or none, or too late for the next letter
    Footprint program;
    Footprint guard;
};

/// How an hour's row is headed, and the row itself; of a Markdown table.
std::string heading();
std::string row(const Hour& hour);

/// What is wrong with a day, a sentence each: a switch that was missed, and at
/// the end of an hour 3 % more memory, or any more descriptors, than at the end of
/// the first. Less of either is no fault.
std::vector<std::string> faults(const std::vector<Hour>& day);

}  // namespace quillmere::soak
