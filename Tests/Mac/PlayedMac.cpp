// The Mac that the smoke tests find where there is none.
#include "Tests/Mac/Doubles/TextInput.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace {

/// One layout, and it is current.
class PlayedMac : public testing::Environment {
public:
    // The application object is made before the tests are set up.
    PlayedMac() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

    void SetUp() override {
        textinput::installed = {{.id = "com.apple.keylayout.ABC", .name = "ABC", .languages = {"en"}}};
        textinput::current = 0;
    }
};

// GoogleTest deletes it.
[[maybe_unused]] const testing::Environment* const playedMac = testing::AddGlobalTestEnvironment(new PlayedMac);

}  // namespace
