#pragma once

#include "TapService/TapServer.h"
#include "Tests/TapService/FakeMachine.h"
#include "Tests/TapService/FakeSessions.h"
#include "Tests/TapService/TapLoop.h"
#include "Tests/TapService/TapProgram.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <chrono>
#include <string>
#include <vector>

namespace quillmere::tap {

/// The server between one keyboard, two people and their programs.
class TapServerTest : public testing::Test {
protected:
    using Program = TapProgram;

    static constexpr DeviceId keyboard = 1;
    static constexpr uid_t anna = 1000;
    static constexpr uid_t bert = 1001;
    static constexpr TapShortcut controlSpace{KEY_SPACE, Flags::control};
    static constexpr Time recordingLimit = std::chrono::milliseconds(50);

    TapServerTest() {
        sessions.sessions = {{"a", {anna, true, false}}, {"b", {bert, false, false}}};
        EXPECT_TRUE(server.start());
        machine.plug(keyboard);
    }
    ~TapServerTest() override { EXPECT_EQ(machine.fakes.faults, std::vector<std::string>{}); }

    TapProgram open(uid_t user, const std::string& session) { return TapProgram(server.openTap(user, session)); }
    TapProgram openWithShortcut(uid_t user, const std::string& session) {
        TapProgram program = open(user, session);
        program.send(Interest{.shortcuts = {controlSpace}});
        loop.run();
        program.receive();
        return program;
    }
    void type(const std::string& words) { machine.type(keyboard, words); }
    /// Once the service has done what it has to do.
    bool isGrabbed() {
        loop.run();
        return machine.keyboard(keyboard).isGrabbed;
    }
    void expectCutOff(const Packet& packet) {
        TapProgram program = openWithShortcut(anna, "a");
        EXPECT_TRUE(isGrabbed());
        program.sendBytes(packet);
        EXPECT_TRUE(loop.runUntil([&] { return program.isClosed(); }));
        EXPECT_FALSE(isGrabbed());
        EXPECT_EQ(server.tapCount(), 0U);
    }

    TapLoop loop;
    FakeMachine machine;
    FakeSessions sessions;
    TapServer server{loop.get(), machine, sessions, recordingLimit};
};

}  // namespace quillmere::tap
