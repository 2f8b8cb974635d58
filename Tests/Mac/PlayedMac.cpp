#include "Tests/Mac/PlayedMac.h"

#include "Tests/Mac/Doubles/TextInput.h"

#include <string_view>

namespace quillmere {

namespace {

bool isSmoke(const testing::TestSuite& suite) {
    return std::string_view(suite.name()) == "MacSmoke";
}

}  // namespace

void PlayedMac::OnTestSuiteStart(const testing::TestSuite& suite) {
    if (!isSmoke(suite)) return;
    textinput::installed = {{.id = "com.apple.keylayout.ABC", .name = "ABC", .languages = {"en"}}};
    textinput::current = 0;
}

void PlayedMac::OnTestSuiteEnd(const testing::TestSuite& suite) {
    if (isSmoke(suite)) textinput::reset();
}

}  // namespace quillmere
