#include "Quillmere/Updates/ByteCount.h"

#include <gtest/gtest.h>

#include <limits>

namespace quillmere {

TEST(ByteCount, IsWrittenAsFileManagersWriteIt) {
    const std::vector<std::pair<std::int64_t, const char*>> cases = {
        {0, "0 bytes"},
        {1, "1 byte"},
        {2, "2 bytes"},
        {999, "999 bytes"},
        {1000, "1.0 kB"},
        {1049, "1.0 kB"},
        {1050, "1.1 kB"},
        {12'345, "12.3 kB"},
        {999'949, "999.9 kB"},
        {999'950, "1.0 MB"},
        {1'000'000, "1.0 MB"},
        {2'300'000, "2.3 MB"},
        {2'349'999, "2.3 MB"},
        {2'350'000, "2.4 MB"},
        {123'456'789, "123.5 MB"},
        {1'000'000'000, "1.0 GB"},
        {4'700'000'000, "4.7 GB"},
        {1'500'000'000'000, "1.5 TB"},
        {2'000'000'000'000'000, "2.0 PB"},
        {std::numeric_limits<std::int64_t>::max(), "9.2 EB"},
    };
    for (const auto& [bytes, text] : cases) {
        EXPECT_EQ(byteCountText(bytes), text) << bytes;
    }
}

TEST(ByteCount, LessThanNothingIsNothing) {
    EXPECT_EQ(byteCountText(-1), "0 bytes");
    EXPECT_EQ(byteCountText(std::numeric_limits<std::int64_t>::min()), "0 bytes");
}

}  // namespace quillmere
