#include "Tests/Machine/TapTest.h"

#include <algorithm>

namespace quillmere::machine {

void TapTest::SetUp() {
    Service::grant(writer);
    session().activate();
    owner_.emplace(session());
    ASSERT_EQ(owner_->open(), "");
}

void TapTest::TearDown() {
    owner_.reset();
    EXPECT_TRUE(becomesFree());
    MachineTest::TearDown();
}

void TapTest::listen(TapOwner::Answer answer) {
    owner().answer(answer);
    owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
    ASSERT_TRUE(becomesGrabbed());
}

std::uint32_t TapTest::waitForQuestion() {
    EXPECT_TRUE(waitUntil([this] { return owner().question() != 0; })) << "The owner is not asked.";
    return owner().question();
}

std::size_t TapTest::questions() {
    return static_cast<std::size_t>(
        std::ranges::count_if(owner().events(), [](const tap::KeyEvent& event) { return event.sequence != 0; }));
}

}  // namespace quillmere::machine
