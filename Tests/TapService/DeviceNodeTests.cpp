#include "TapService/DeviceNode.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

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
    const std::string file = testing::TempDir() + "quillmere-ordinary-" + std::to_string(getpid());
    std::ofstream(file) << "text";
    EXPECT_FALSE(openDeviceNode(file, "/sys/devices/virtual/mem/null"));
    EXPECT_EQ(errno, ESTALE);
    std::filesystem::remove(file);
}

}  // namespace
}  // namespace quillmere::tap
