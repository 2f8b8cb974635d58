#include "Quillmere/Platform/Application.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const auto application = quillmere::makeApplication(argc, argv);
    return RUN_ALL_TESTS();
}
