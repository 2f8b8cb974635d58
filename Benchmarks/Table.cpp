#include "Benchmarks/Table.h"

#include <algorithm>
#include <cstdio>

namespace quillmere::bench {

double percentile(std::vector<double> values, double share) {
    std::ranges::sort(values);
    return values.at(static_cast<std::size_t>(share * static_cast<double>(values.size() - 1)));
}

std::string text(double value, const char* unit, int decimals) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.*f %s", decimals, value, unit);
    return buffer;
}

std::string ratioText(double ours, double theirs) {
    return text(ours / theirs, "×", 2);
}

void row(const std::string& what, const std::string& ours, const std::string& theirs, const std::string& ratio,
         const std::string& target) {
    std::printf("| %s | %s | %s | %s | %s |\n", what.c_str(), ours.c_str(), theirs.c_str(), ratio.c_str(),
                target.c_str());
    std::fflush(stdout);
}

void rows(const std::string& what, const std::vector<double>& ours, const std::vector<double>& theirs,
          const Targets& targets) {
    const auto one = [&](const char* name, double share, const char* target) {
        const double our = percentile(ours, share);
        const double their = percentile(theirs, share);
        row(what + ", " + name, text(our, "µs"), text(their, "µs"), ratioText(our, their), target);
    };
    one("median", 0.5, targets.median);
    one("p99", 0.99, targets.tail);
}

}  // namespace quillmere::bench
