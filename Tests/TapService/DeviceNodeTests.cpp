#include "TapService/DeviceNode.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace quillmere::tap {
namespace {

TEST(DeviceNode, TheNodeOfTheDeviceThatWasSeenIsOpened) {
    EXPECT_TRUE(openDeviceNode("/dev/null", "/sys/devices/virtual/mem/null"));
}

TEST(DeviceNode, ANodeThatAnotherDeviceHasByNowIsNotOpened) {
    errno = 0;
    EXPECT_FALSE(openDeviceNode("/dev/zero", "/sys/devices/virtual/mem/null"));
    EXPECT_EQ(errno, ESTALE);
}

TEST(DeviceNode, ANodeThatIsGoneIsNotOpened) {
    EXPECT_FALSE(openDeviceNode("/dev/nothing-of-this-name", "/sys/devices/virtual/mem/null"));
    EXPECT_EQ(errno, ENOENT);
}

TEST(DeviceNode, AnOrdinaryFileInItsPlaceIsNotOpened) {
    EXPECT_FALSE(openDeviceNode("/proc/self/comm", "/sys/devices/virtual/mem/null"));
    EXPECT_EQ(errno, ESTALE);
}

}  // namespace
}  // namespace quillmere::tap
