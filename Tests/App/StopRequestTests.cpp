#include "Quillmere/Platform/Linux/Tap/X11/StopRequest.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

namespace quillmere {

namespace {

using Handler = void (*)(int);

Handler handlerOfStopRequests() {
    struct sigaction action{};
    sigaction(SIGTSTP, nullptr, &action);
    return action.sa_handler;
}

bool isReadable(int descriptor) {
    pollfd waiting{.fd = descriptor, .events = POLLIN, .revents = 0};
    return poll(&waiting, 1, 0) == 1;
}

TEST(StopRequest, ARequestIsCaughtAndCanBeTakenOnce) {
    const StopRequest request;
    EXPECT_FALSE(isReadable(request.fileDescriptor()));
    EXPECT_FALSE(request.take());
    raise(SIGTSTP);
    raise(SIGTSTP);
    EXPECT_TRUE(isReadable(request.fileDescriptor()));
    EXPECT_TRUE(request.take());
    EXPECT_FALSE(request.take());
}

TEST(StopRequest, ItsEndLeavesTheSignalAsItWas) {
    ASSERT_EQ(handlerOfStopRequests(), SIG_DFL);
    {
        const StopRequest request;
    }
    EXPECT_EQ(handlerOfStopRequests(), SIG_DFL);
}

TEST(StopRequest, AProcessThatIgnoresTheSignalGoesOnIgnoringIt) {
    std::signal(SIGTSTP, SIG_IGN);
    {
        const StopRequest request;
        EXPECT_EQ(request.fileDescriptor(), -1);
        EXPECT_EQ(handlerOfStopRequests(), SIG_IGN);
        EXPECT_FALSE(request.take());
    }
    EXPECT_EQ(handlerOfStopRequests(), SIG_IGN);
    std::signal(SIGTSTP, SIG_DFL);
}

TEST(StopRequest, TheProcessStopsUntilItIsContinued) {
    constexpr int cameBack = 17;
    const pid_t child = fork();
    ASSERT_NE(child, -1);
    if (child == 0) {
        StopRequest::stopProcess();
        _exit(cameBack);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, WUNTRACED), child);
    EXPECT_TRUE(WIFSTOPPED(status));
    kill(child, SIGCONT);
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), cameBack);
}

}  // namespace

}  // namespace quillmere
