#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/Ibus.h"
#include "Tests/Support/TextField.h"

#include <optional>

// What arrives in an ordinary application's text field around a switch between a
// layout and an input method.
namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

constexpr int bursts = 100;

/// The whole program beside a framework with its Hangul: one group on ⌃⌥Space,
/// of a layout and the method.
class MethodTypingTest : public DesktopTest {
protected:
    virtual void startFramework() = 0;
    virtual std::string current() = 0;
    /// As the framework's own panel does.
    virtual void use(const std::string& method) = 0;

    void startEverything(const std::string& framework, const std::string& plain) {
        startDesktop({.layouts = "us,ua"});
        startFramework();
        desktop().server().setLayouts("us,ua");
        storeConfiguration(configurationText({{.sources = {"xkb:us", framework + ":hangul"}}}));
        startProgram();
        field.emplace(desktop().folder(), desktop().environment(), framework);
        // The first use of a method loads it, which takes a busy machine long.
        for (const std::string& method : {std::string("hangul"), plain})
            ASSERT_TRUE(waitUntil([&] {
                use(method);
                return current() == method;
            })) << method;
        plain_ = plain;
    }
    bool waitForText(const std::string& text) {
        return waitUntil([&] { return field->text() == text; }, 5s);
    }
    void switchAndTypeWithoutAGap() {
        std::string expected;
        int wrong = 0;
        for (int burst = 0; burst < bursts; ++burst) {
            const std::string syllable = burst % 2 == 0 ? "아 " : "dk ";
            expected += syllable;
            typist().play(Strokes().chord(controlAlt, keys::space).tap(keys::d).tap(keys::k).tap(keys::space));
            if (waitForText(expected)) continue;
            ++wrong;
            ADD_FAILURE() << "after burst " << burst << ": " << field->text();
            expected = field->text();
        }
        EXPECT_EQ(wrong, 0);
    }
    /// What becomes of a syllable that is being composed, when `leave` switches
    /// to the layout.
    template <typename Leave>
    std::string composedAndLeft(const Leave& leave) {
        use("hangul");
        EXPECT_TRUE(waitUntil([this] { return current() == "hangul"; }));
        const std::string before = field->text();
        typist().play(Strokes().tap(keys::d).tap(keys::k));
        // It shows nowhere until it is finished.
        EXPECT_TRUE(holdsFor([&] { return field->text() == before; }, 300ms));
        leave();
        EXPECT_TRUE(waitUntil([this] { return current() == plain_; }));
        typist().tap(keys::a);
        EXPECT_TRUE(waitUntil([&] { return field->text().ends_with('a'); }));
        return field->text().substr(before.size());
    }
    void composeAndSwitch() {
        const std::string byItself = composedAndLeft([this] { use(plain_); });
        EXPECT_EQ(composedAndLeft([this] { pressShortcut(); }), byItself);
    }

    std::optional<TextField> field;

private:
    std::string plain_;
};

class FcitxTypingTest : public MethodTypingTest {
protected:
    void startFramework() override {
        fcitx.emplace(desktop().folder(), desktop().environment(), desktop().bus().connect(),
                      std::vector<std::string>{plain, "hangul"});
    }
    std::string current() override { return fcitx->current(); }
    void use(const std::string& method) override { fcitx->use(method); }

    static constexpr const char* plain = "keyboard-us";
    std::optional<Fcitx> fcitx;
};

TEST_F(FcitxTypingTest, EveryLetterAfterAShortcutIsInItsMethodOrLayoutHoweverFast) {
    ASSERT_NO_FATAL_FAILURE(startEverything("fcitx", plain));
    switchAndTypeWithoutAGap();
}

TEST_F(FcitxTypingTest, WhatIsBeingComposedIsLeftAsByFcitxItself) {
    ASSERT_NO_FATAL_FAILURE(startEverything("fcitx", plain));
    composeAndSwitch();
}

class IbusTypingTest : public MethodTypingTest {
protected:
    void startFramework() override {
        ibus.emplace(desktop().folder(), desktop().environment(), desktop().bus().connect(),
                     std::vector<std::string>{plain, "hangul"});
    }
    std::string current() override { return ibus->current(); }
    void use(const std::string& method) override { ibus->use(method); }

    static constexpr const char* plain = "xkb:us::eng";
    std::optional<Ibus> ibus;
};

TEST_F(IbusTypingTest, EveryLetterAfterAShortcutIsInItsMethodOrLayoutHoweverFast) {
    ASSERT_NO_FATAL_FAILURE(startEverything("ibus", plain));
    switchAndTypeWithoutAGap();
}

TEST_F(IbusTypingTest, WhatIsBeingComposedIsLeftAsByIbusItself) {
    ASSERT_NO_FATAL_FAILURE(startEverything("ibus", plain));
    composeAndSwitch();
}

}  // namespace

}  // namespace quillmere::support
