#include "Quillmere/Platform/Application.h"
#include "Tests/Mac/LeakCheck.h"
#include "Tests/Mac/PlayedMac.h"

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    testing::InitGoogleTest(&argc, argv);
    const auto application = quillmere::makeApplication(argc, argv);
    auto& listeners = testing::UnitTest::GetInstance()->listeners();
    listeners.Append(new quillmere::PlayedMac);
    listeners.Append(new quillmere::LeakCheck);
    return RUN_ALL_TESTS();
}
