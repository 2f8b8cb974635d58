// Plays a day of eight hours to the built program, on a real desktop of its own
// and in less time, and says whether it has left anything behind: a Markdown table
// with a row for each hour, and what is wrong with it.
//
//   soak <quillmere> <minutes>

#include "Tests/Soak/Day.h"

#include <QCoreApplication>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace quillmere::soak {
namespace {

constexpr int hours = 8;

std::vector<Hour> play(const std::string& program, std::chrono::milliseconds length) {
    Day day(program);
    std::vector<Hour> played;
    std::cout << heading();
    const auto keep = [&](const Hour& hour) {
        std::cout << row(hour);
        played.push_back(hour);
    };
    for (int hour = 1; hour <= hours; ++hour)
        keep(day.playHour(std::to_string(hour), length / hours));
    keep(day.playRestartOfTheBus());
    return played;
}

}  // namespace
}  // namespace quillmere::soak

int main(int argc, char** argv) {
    using namespace quillmere::soak;
    // The desktop that is played has a bus of its own; the machine's stays out of it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    // Each row is to be read when it is there, through a pipe too.
    std::cout << std::unitbuf;
    const QCoreApplication application(argc, argv);
    const int minutes = argc == 3 ? std::atoi(argv[2]) : 0;
    if (minutes <= 0) {
        std::cerr << "usage: " << argv[0] << " <program> <minutes>\n";
        return 2;
    }
    try {
        const std::vector<std::string> found = faults(play(argv[1], std::chrono::minutes(minutes)));
        for (const std::string& fault : found)
            std::cout << "Wrong: " << fault << ".\n";
        return found.empty() ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::cout << "Wrong: " << error.what() << ".\n";
        return EXIT_FAILURE;
    }
}
