#include "Quillmere/Platform/Linux/Tap/X11/TapGuard.h"
#include "Tests/Desktop/TapTest.h"

#include <xcb/xcb.h>

#include <cstdlib>

// The process that watches over the tap, with a tap of which only the hold on
// the keyboard is real.
namespace quillmere::support {

namespace {

class TapGuardTest : public TapTest {
protected:
    ~TapGuardTest() override { xcb_disconnect(tap_); }

    void SetUp() override {
        ASSERT_EQ(xcb_connection_has_error(tap_), 0);
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(tap_)).data->root;
        const xcb_pixmap_t resource = xcb_generate_id(tap_);
        xcb_create_pixmap(tap_, 1, resource, root, 1, 1);
        auto* const reply = xcb_grab_keyboard_reply(
            tap_, xcb_grab_keyboard(tap_, 0, root, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
            nullptr);
        ASSERT_NE(reply, nullptr);
        EXPECT_EQ(reply->status, XCB_GRAB_STATUS_SUCCESS);
        std::free(reply);
        guard_ = TapGuard::start(TapGuard::standardProgram(), resource);
        ASSERT_NE(guard_, nullptr);
    }

    bool isTapClosed() {
        while (xcb_generic_event_t* event = xcb_poll_for_event(tap_))
            std::free(event);
        return xcb_connection_has_error(tap_) != 0;
    }

    xcb_connection_t* tap_ = xcb_connect(nullptr, nullptr);
    std::unique_ptr<TapGuard> guard_;
};

constexpr std::chrono::milliseconds longerThanItsPatience{3000};

}  // namespace

TEST_F(TapGuardTest, ATapThatRecordsAndDoesNotAnswerIsClosed) {
    guard_->setRecording(true);
    EXPECT_TRUE(waitUntil([this] { return isTapClosed(); }));
    ASSERT_NO_FATAL_FAILURE(waitForEverythingTyped());
    // Its work is done.
    EXPECT_TRUE(waitUntil([this] { return !guard_->answer(); }));
}

TEST_F(TapGuardTest, ATapThatDoesNotAnswerWhileAModifierIsHeldIsClosed) {
    typist->press(keys::leftControl);
    EXPECT_TRUE(waitUntil([this] { return isTapClosed(); }));
    typist->release(keys::leftControl);
    ASSERT_NO_FATAL_FAILURE(waitForEverythingTyped());
}

TEST_F(TapGuardTest, ATapThatAnswersKeepsTheKeyboard) {
    guard_->setRecording(true);
    EXPECT_TRUE(holdsFor([this] { return guard_->answer() && !isTapClosed(); }, longerThanItsPatience));
}

TEST_F(TapGuardTest, ATapIsNotAskedWhileNothingCanBeHeldUp) {
    typist->press(keys::leftShift);
    EXPECT_TRUE(holdsFor([this] { return !isTapClosed(); }, longerThanItsPatience));
    typist->release(keys::leftShift);
}

}  // namespace quillmere::support
