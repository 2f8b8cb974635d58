#pragma once

#include "Quillmere/Platform/InputSourceService.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmere::support {

/// Expects American English, Dvorak and Ukrainian, in this order, with all that
/// every desktop knows of them.
inline void expectEnglishDvorakAndUkrainian(const std::vector<InputSourceRecord>& list) {
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].id, "xkb:us");
    EXPECT_EQ(list[0].localizedName, "English (US)");
    EXPECT_EQ(list[0].languages, std::vector<std::string>{"eng"});
    EXPECT_EQ(list[1].id, "xkb:us+dvorak");
    EXPECT_EQ(list[1].localizedName, "English (Dvorak)");
    EXPECT_EQ(list[2].id, "xkb:ua");
    EXPECT_EQ(list[2].languages, std::vector<std::string>{"ukr"});
    for (const InputSourceRecord& record : list) {
        EXPECT_EQ(record.type, InputSourceType::keyboardLayout);
        EXPECT_TRUE(record.enabled && record.selectCapable);
    }
}

}  // namespace quillmere::support
