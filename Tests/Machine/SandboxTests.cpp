#include "Tests/Machine/Sandbox.h"
#include "Tests/Machine/TapTest.h"

#include <memory>
#include <string>

// What the service could not do even if it wanted to: shell commands in its
// place, behind everything that its unit puts around it.
namespace quillmere::machine {

namespace {

using Commands = Sandbox::Commands;

std::string order(const std::string& rest) {
    return "busctl call org.freedesktop.systemd1 /org/freedesktop/systemd1 org.freedesktop.systemd1.Manager " + rest;
}

std::string inControlGroup(const std::string& limit) {
    return "$(cat /sys/fs/cgroup$(sed s/0::// /proc/self/cgroup)/" + limit + ")";
}

const Commands whatItIs = {
    "test \"$(id -un)\" = quillmere-tapd",         "grep -q '^CapPrm:.0*$' /proc/self/status",
    "grep -q '^CapEff:.0*$' /proc/self/status",    "grep -q '^CapBnd:.0*$' /proc/self/status",
    "grep -q '^NoNewPrivs:.1$' /proc/self/status", "grep -q '^Seccomp:.2$' /proc/self/status",
};
const Commands secrets = {"cat /etc/shadow", "ls /root", "ls /home/writer", "cat /proc/1/environ", "kill -0 1"};
const Commands orders = {
    order("StartUnit ss systemd-tmpfiles-clean.service replace"),
    order("StartTransientUnit 'ssa(sv)a(sa(sv))' quillmere-try.scope fail 1 PIDs au 1 $$ 0"),
    order("SetEnvironment as 1 QUILLMERE=1"),
    "busctl call org.freedesktop.login1 /org/freedesktop/login1 org.freedesktop.login1.Manager LockSessions",
};
const Commands otherFolders = {
    "touch /etc/quillmere-try", "touch /usr/quillmere-try", "touch /var/quillmere-try",
    "touch /var/lib/try",       "touch /run/quillmere-try", "touch /home/try",
    "touch /dev/quillmere-try", "touch /dev/shm/try",       "touch /run/lock/quillmere-try",
};
const Commands ownFolders = {
    "touch /var/lib/quillmere/try && rm /var/lib/quillmere/try",
    "test -z \"$(ls /tmp /var/tmp /dev/mqueue | grep -v :)\" && touch /tmp/quillmere-try",
};
const Commands inputDevices = {": < /dev/input/event0", ": > /dev/uinput"};
const Commands otherDevices = {": < /dev/vda", ": < /dev/mem", ": < /dev/tty1", ": < /dev/kmsg", ": < /dev/dri/card0"};
const Commands uinputForItAlone = {
    "test \"$(stat -c %U:%G:%a /dev/uinput)\" = quillmere-tapd:root:600",
    "! setpriv --reuid=1500 --regid=1500 --clear-groups sh -c ': > /dev/uinput'",
    "! id -Gn quillmere-tapd | grep -w input",
    "getent passwd quillmere-tapd | grep -q nologin$",
};
// Nobody listens there, which is another answer than that one may not.
const Commands connections = {
    "bash -c ': <> /dev/tcp/127.0.0.1/9' 2>&1 | grep -q refused",
    "bash -c ': <> /dev/udp/127.0.0.1/9'",
};
const Commands nothingOnDisk = {"test $(ulimit -Hc) = 0", "test " + inControlGroup("memory.swap.max") + " = 0"};
const Commands boundedMemory = {"test " + inControlGroup("memory.max") + " -le $((72 * 1024 * 1024))"};
const std::string rating = "systemd-analyze security --no-pager quillmere-tapd.service --threshold=";
const Commands ratings = {rating + "1", rating + "20"};

class Confinement : public testing::Test {
protected:
    static void SetUpTestSuite() {
        // The state folder is there then, as the service makes it.
        Service().start();
        Commands all;
        for (const Commands& some : {whatItIs, secrets, orders, otherFolders, ownFolders, inputDevices, otherDevices,
                                     uinputForItAlone, connections, nothingOnDisk, boundedMemory, ratings})
            all.insert(all.end(), some.begin(), some.end());
        sandbox_ = std::make_unique<Sandbox>(all);
    }
    static void TearDownTestSuite() { sandbox_.reset(); }

    /// The service can do nothing of it, and root all.
    static void expectRefused(const Commands& commands) {
        EXPECT_EQ(sandbox_->succeeding(commands), Commands{});
        EXPECT_EQ(sandbox_->succeedingAsRoot(commands), commands);
    }
    static void expectAllowed(const Commands& commands) { EXPECT_EQ(sandbox_->succeeding(commands), commands); }
    static void expectOutside(const Commands& commands) { EXPECT_EQ(sandbox_->succeedingAsRoot(commands), commands); }

    static inline std::unique_ptr<Sandbox> sandbox_;
};

}  // namespace

TEST_F(Confinement, RatesItAtTwoOrLess) {
    EXPECT_EQ(sandbox_->succeedingAsRoot(ratings), Commands{rating + "20"});
}

TEST_F(Confinement, MakesItAUserOfItsOwnWithoutARightMore) {
    expectAllowed(whatItIs);
}

TEST_F(Confinement, KeepsItFromWhatIsRootsOrAnotherUsers) {
    expectRefused(secrets);
}

TEST_F(Confinement, KeepsItFromGivingTheSystemOrders) {
    expectRefused(orders);
}

TEST_F(Confinement, LetsItWriteToItsStateFolderOnly) {
    expectRefused(otherFolders);
    expectAllowed(ownFolders);
}

TEST_F(Confinement, LetsItOpenInputDevicesOnly) {
    expectAllowed(inputDevices);
    expectRefused(otherDevices);
}

TEST_F(Confinement, LeavesVirtualKeyboardsToTheServiceAlone) {
    expectOutside(uinputForItAlone);
}

TEST_F(Confinement, GivesItNoNetwork) {
    expectRefused(connections);
}

TEST_F(Confinement, KeepsItsMemoryOffTheDisk) {
    expectAllowed(nothingOnDisk);
}

TEST_F(Confinement, BoundsItsMemory) {
    expectAllowed(boundedMemory);
}

}  // namespace quillmere::machine
