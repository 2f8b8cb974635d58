#pragma once

#include <string>
#include <vector>

// The table that the benchmarks print together, in Markdown: each a few of its
// rows, with the program's figure, that of a yardstick of the same run, the
// ratio of both and what it is to be.
namespace quillmere::bench {

/// The value that this share of all is not above: 0.5 is the median.
double percentile(std::vector<double> values, double share);

/// "3.4 ms"
std::string text(double value, const char* unit, int decimals = 0);
/// "1.20 ×"
std::string ratioText(double ours, double theirs);

/// Prints a row, at once.
void row(const std::string& what, const std::string& ours, const std::string& theirs, const std::string& ratio,
         const std::string& target);

/// What the ratios of two rows are to be.
struct Targets {
    const char* median = "–";
    const char* tail = "–";
};

/// Prints two rows, of the median and of the 99th percentile of times in
/// microseconds.
void rows(const std::string& what, const std::vector<double>& ours, const std::vector<double>& theirs,
          const Targets& targets);

}  // namespace quillmere::bench
