#include "Tests/Soak/Hour.h"

#include <array>
#include <cstdio>

namespace quillmere::soak {

namespace {

constexpr double growthAllowed = 0.03;

void compare(const std::string& whose, const Footprint& first, const Footprint& later,
             std::vector<std::string>& faults) {
    const double allowed = 1 + growthAllowed;
    if (later.memory > first.memory * allowed) faults.push_back(whose + " memory has grown");
    if (later.written > first.written * allowed) faults.push_back(whose + " written memory has grown");
    if (later.descriptors > first.descriptors) faults.push_back(whose + " descriptors have become more");
}

}  // namespace

std::string heading() {
    return "| hour | switches | missed | memory (PSS), KiB | of it written | descriptors | its guard's memory, KiB "
           "| descriptors |\n|---|---|---|---|---|---|---|---|\n";
}

std::string row(const Hour& hour) {
    std::array<char, 160> text{};
    std::snprintf(text.data(), text.size(), "| %s | %d | %d | %.0f | %.0f | %d | %.0f | %d |\n", hour.name.c_str(),
                  hour.switches, hour.missed, hour.program.memory, hour.program.written, hour.program.descriptors,
                  hour.guard.memory, hour.guard.descriptors);
    return text.data();
}

std::vector<std::string> faults(const std::vector<Hour>& day) {
    std::vector<std::string> faults;
    for (const Hour& hour : day) {
        if (hour.missed > 0)
            faults.push_back(hour.name + ": of the switches " + std::to_string(hour.missed) + " were missed");
        compare(hour.name + ": the program's", day.front().program, hour.program, faults);
        compare(hour.name + ": its guard's", day.front().guard, hour.guard, faults);
    }
    return faults;
}

}  // namespace quillmere::soak
