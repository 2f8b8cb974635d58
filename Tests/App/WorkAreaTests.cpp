#include "Quillmere/Platform/Linux/Plate/WorkArea.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace quillmere {
namespace {

using Strut = std::vector<std::uint32_t>;

constexpr QSize screen(3200, 1080);
constexpr QRect left(0, 0, 1920, 1080);
// Lower than its neighbour by 200 pixels.
constexpr QRect right(1920, 200, 1280, 720);

struct Case {
    const char* name;
    std::vector<Strut> struts;  ///< left, right, top, bottom, and where along each
    QRect ofLeft;
    QRect ofRight;
};

TEST(WorkArea, IsWhatPanelsLeaveOfTheirOwnMonitor) {
    const std::vector<Case> cases{
        {"no panel", {}, left, right},
        {"at the top of the left one", {{0, 0, 60, 0, 0, 0, 0, 0, 0, 1919, 0, 0}}, left.adjusted(0, 60, 0, 0), right},
        {"at the top of the right one",
         {{0, 0, 230, 0, 0, 0, 0, 0, 1920, 3199, 0, 0}},
         left,
         right.adjusted(0, 30, 0, 0)},
        {"at the bottom of the right one",
         {{0, 0, 0, 200, 0, 0, 0, 0, 0, 0, 1920, 3199}},
         left,
         right.adjusted(0, 0, 0, -40)},
        {"along the whole bottom", {{0, 0, 0, 40}}, left.adjusted(0, 0, 0, -40), right},
        {"at the left edge", {{48, 0, 0, 0, 0, 1079, 0, 0, 0, 0, 0, 0}}, left.adjusted(48, 0, 0, 0), right},
        {"at the right edge", {{0, 48, 0, 0, 0, 0, 0, 1079, 0, 0, 0, 0}}, left, right.adjusted(0, 0, -48, 0)},
        {"between the two, on the left one",
         {{0, 1280 + 48, 0, 0, 0, 0, 0, 1079, 0, 0, 0, 0}},
         left.adjusted(0, 0, -48, 0),
         right},
        {"two at one edge", {{0, 0, 30, 0}, {0, 0, 60, 0}}, left.adjusted(0, 60, 0, 0), right},
        {"two at two edges", {{0, 0, 30, 0}, {20, 0, 0, 0}}, left.adjusted(20, 30, 0, 0), right},
        {"a malformed one", {{60, 60, 60}}, left, right},
        {"one of absurd size", {{0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF}}, left, right},
    };
    for (const auto& [name, struts, ofLeft, ofRight] : cases) {
        WorkArea leftArea(left, screen);
        WorkArea rightArea(right, screen);
        for (const auto& strut : struts) {
            leftArea.remove(strut);
            rightArea.remove(strut);
        }
        EXPECT_EQ(leftArea.free(), ofLeft) << name;
        EXPECT_EQ(rightArea.free(), ofRight) << name;
    }
}

}  // namespace
}  // namespace quillmere
