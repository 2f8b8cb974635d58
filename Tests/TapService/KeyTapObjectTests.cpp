#include "TapService/KeyTapObject.h"

#include "TapService/KeyTapNames.h"
#include "TapService/TapProtocol.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/TapService/CallFlood.h"
#include "Tests/TapService/TapServiceTest.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QDeadlineTimer>

#include <array>

#include <sys/socket.h>

namespace quillmere {
namespace {

namespace names = tap::KeyTapNames;
using support::waitUntil;

class KeyTapObjectTest : public TapServiceTest {
protected:
    static QDBusMessage method(const QString& name) {
        return QDBusMessage::createMethodCall(names::service, names::path, names::interface, name);
    }
    QDBusMessage call(const QString& name) { return client.call(method(name)); }
    QDBusPendingReply<bool> begin(const QString& name) { return client.asyncCall(method(name)); }
    bool hasAccess() { return call("HasAccess").arguments().value(0).toBool(); }
    static bool isFinished(const QDBusPendingCall& pending) {
        return waitUntil([&] { return pending.isFinished(); });
    }

    QDBusConnection client = bus.connect();
    QDBusConnection authorityBus = bus.connect();
    FakeAuthority authority{authorityBus};
};

TEST_F(KeyTapObjectTest, NobodyHasAccessAtFirst) {
    EXPECT_EQ(call("HasAccess").arguments(), QVariantList{false});
}

TEST_F(KeyTapObjectTest, TheVersionIsTheChannels) {
    QDBusMessage get =
        QDBusMessage::createMethodCall(names::service, names::path, "org.freedesktop.DBus.Properties", "Get");
    get << QString(names::interface) << QStringLiteral("Version");
    const QDBusMessage reply = client.call(get);
    EXPECT_EQ(reply.arguments().value(0).value<QDBusVariant>().variant().toUInt(), tap::version);
}

TEST_F(KeyTapObjectTest, WithoutAGrantThereIsNoTap) {
    EXPECT_EQ(call("OpenTap").errorName(), "org.quillmere.KeyTap1.Error.NotGranted");
    EXPECT_EQ(host->tapCount(), 0U);
}

TEST_F(KeyTapObjectTest, OutsideTheActiveSessionThereIsNoTap) {
    host->grant();
    host->activate("b");
    EXPECT_EQ(call("OpenTap").errorName(), "org.quillmere.KeyTap1.Error.NotActive");
    host->activate("a");
    EXPECT_TRUE(call("OpenTap").errorName().isEmpty());
}

TEST_F(KeyTapObjectTest, ATapIsAChannelThatBeginsWithHello) {
    host->grant();
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = call("OpenTap");
    ASSERT_FALSE(reply.isError()) << reply.error().message().toStdString();
    std::array<std::byte, tap::maxMessageSize> buffer{};
    const ssize_t size = recv(reply.value().fileDescriptor(), buffer.data(), buffer.size(), 0);
    ASSERT_GT(size, 0);
    EXPECT_EQ(tap::decodeServiceMessage(std::span(buffer).first(static_cast<std::size_t>(size))),
              tap::ServiceMessage(tap::Hello{500}));
    EXPECT_EQ(host->tapCount(), 1U);
}

TEST_F(KeyTapObjectTest, AnAdministratorsYesIsRemembered) {
    const auto reply = begin("RequestAccess");
    ASSERT_TRUE(isFinished(reply));
    EXPECT_TRUE(reply.value());
    EXPECT_TRUE(hasAccess());
    ASSERT_EQ(authority.questions.size(), 1U);
    EXPECT_EQ(authority.questions[0].subject, client.baseService());
    EXPECT_EQ(authority.questions[0].action, "org.quillmere.KeyTap1.grant");
    EXPECT_EQ(authority.questions[0].flags, 1U);

    const auto again = begin("RequestAccess");
    ASSERT_TRUE(isFinished(again));
    EXPECT_TRUE(again.value());
    EXPECT_EQ(authority.questions.size(), 1U);

    host.reset();
    startService();
    EXPECT_TRUE(hasAccess());
}

TEST_F(KeyTapObjectTest, ANoGrantsNothingAndCanBeAskedAgain) {
    authority.answer = FakeAuthority::Answer::no;
    const auto reply = begin("RequestAccess");
    ASSERT_TRUE(isFinished(reply));
    EXPECT_FALSE(reply.isError());
    EXPECT_FALSE(reply.value());
    EXPECT_FALSE(hasAccess());
    authority.answer = FakeAuthority::Answer::yes;
    const auto again = begin("RequestAccess");
    ASSERT_TRUE(isFinished(again));
    EXPECT_TRUE(again.value());
}

TEST_F(KeyTapObjectTest, AnAuthorityThatFailsGrantsNothing) {
    authority.answer = FakeAuthority::Answer::error;
    const auto reply = begin("RequestAccess");
    ASSERT_TRUE(isFinished(reply));
    EXPECT_EQ(reply.error().name(), "org.quillmere.KeyTap1.Error.Failed");
    EXPECT_FALSE(hasAccess());
}

TEST_F(KeyTapObjectTest, WithoutAnAuthorityNothingIsGranted) {
    authorityBus.unregisterService("org.freedesktop.PolicyKit1");
    const auto reply = begin("RequestAccess");
    ASSERT_TRUE(isFinished(reply));
    EXPECT_EQ(reply.error().name(), "org.quillmere.KeyTap1.Error.Failed");
    EXPECT_FALSE(hasAccess());
}

TEST_F(KeyTapObjectTest, OneUserIsAskedOnceAtATime) {
    authority.answer = FakeAuthority::Answer::ask;
    const auto first = begin("RequestAccess");
    ASSERT_TRUE(waitUntil([&] { return authority.questions.size() == 1; }));
    const auto second = begin("RequestAccess");
    ASSERT_TRUE(isFinished(second));
    EXPECT_EQ(second.error().name(), "org.quillmere.KeyTap1.Error.Busy");
    EXPECT_FALSE(first.isFinished());
    authority.finish(true);
    ASSERT_TRUE(isFinished(first));
    EXPECT_TRUE(first.value());
}

TEST_F(KeyTapObjectTest, AnOpenDialogHoldsUpNobodyElse) {
    authority.answer = FakeAuthority::Answer::ask;
    const auto pending = begin("RequestAccess");
    ASSERT_TRUE(waitUntil([&] { return authority.questions.size() == 1; }));
    EXPECT_FALSE(hasAccess());
    authority.finish(false);
    EXPECT_TRUE(isFinished(pending));
}

TEST_F(KeyTapObjectTest, TheDialogOfAProgramThatHasEndedIsTakenAway) {
    authority.answer = FakeAuthority::Answer::ask;
    {
        const QDBusConnection other = bus.connect();
        other.asyncCall(method("RequestAccess"));
        ASSERT_TRUE(waitUntil([&] { return authority.questions.size() == 1; }));
        QDBusConnection::disconnectFromBus(other.name());
    }
    EXPECT_TRUE(waitUntil([&] { return !authority.cancelled.isEmpty(); }));
    EXPECT_EQ(authority.cancelled, QStringList{authority.questions[0].cancellation});
    EXPECT_TRUE(waitUntil([&] { return !host->isBusy(); }));
    EXPECT_FALSE(hasAccess());
}

TEST_F(KeyTapObjectTest, ASignalInTheBusesNameFromSomebodyElseCancelsNoDialog) {
    authority.answer = FakeAuthority::Answer::ask;
    const auto pending = begin("RequestAccess");
    ASSERT_TRUE(waitUntil([&] { return authority.questions.size() == 1; }));
    const QDBusConnection stranger = bus.connect();
    QDBusMessage forged =
        QDBusMessage::createTargetedSignal(names::service, QStringLiteral("/org/freedesktop/DBus"),
                                           QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameOwnerChanged"));
    forged << client.baseService() << client.baseService() << QString();
    ASSERT_TRUE(stranger.send(forged));
    // An answer to what was sent after it: the signal has come.
    EXPECT_EQ(stranger.call(method("HasAccess")).arguments(), QVariantList{false});
    EXPECT_TRUE(host->isBusy());
    EXPECT_TRUE(authority.cancelled.isEmpty());
    authority.finish(true);
    ASSERT_TRUE(isFinished(pending));
    EXPECT_TRUE(pending.value());
}

TEST_F(KeyTapObjectTest, AFloodOfOneProgramsCallsKeepsNobodyElseWaiting) {
    host->grant();
    const CallFlood flood(bus.address());
    ASSERT_TRUE(waitUntil([&] { return flood.sent() > 20'000; }));
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = client.call(method("OpenTap"), QDBus::Block, 5000);
    EXPECT_FALSE(reply.isError()) << reply.error().message().toStdString();
    EXPECT_TRUE(client.call(method("RevokeAccess"), QDBus::Block, 5000).errorName().isEmpty());
    EXPECT_EQ(host->tapCount(), 0U);
}

TEST_F(KeyTapObjectTest, AProgramThatCallsTooOftenIsNotAnsweredUntilItHasBeenQuiet) {
    int answered = 0;
    while (answered < 1000 && client.call(method("HasAccess"), QDBus::Block, 500).type() == QDBusMessage::ReplyMessage)
        ++answered;
    EXPECT_GE(answered, 32);
    EXPECT_LT(answered, 1000);
    EXPECT_TRUE(waitUntil(
        [&] { return client.call(method("HasAccess"), QDBus::Block, 500).type() == QDBusMessage::ReplyMessage; }));
}

TEST_F(KeyTapObjectTest, AUserOpensSoManyTapsAndNoMore) {
    host->grant();
    // The budget is the user's, whichever program asks.
    const std::array programs{bus.connect(), bus.connect(), bus.connect(), bus.connect()};
    std::size_t turn = 0;
    const auto open = [&] { return programs.at(turn++ % programs.size()).call(method("OpenTap")).errorName(); };
    QString error;
    while (turn < 50 && error.isEmpty())
        error = open();
    EXPECT_EQ(error, "org.quillmere.KeyTap1.Error.TooOften");
    // Slow enough to be answered each time.
    QDeadlineTimer pause(0);
    EXPECT_TRUE(waitUntil([&] {
        if (!pause.hasExpired()) return false;
        pause.setRemainingTime(200);
        return open().isEmpty();
    }));
}

TEST_F(KeyTapObjectTest, RevokingTakesTheTapAwayAtOnce) {
    host->grant();
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = call("OpenTap");
    ASSERT_FALSE(reply.isError());
    EXPECT_TRUE(call("RevokeAccess").errorName().isEmpty());
    EXPECT_FALSE(hasAccess());
    EXPECT_EQ(host->tapCount(), 0U);
    EXPECT_EQ(call("OpenTap").errorName(), "org.quillmere.KeyTap1.Error.NotGranted");
}

TEST_F(KeyTapObjectTest, RevokingWithoutAGrantIsHarmless) {
    EXPECT_TRUE(call("RevokeAccess").errorName().isEmpty());
}

TEST_F(KeyTapObjectTest, UnknownMethodsAndArgumentsAreRefused) {
    EXPECT_EQ(call("GrantAccess").errorName(), "org.freedesktop.DBus.Error.UnknownMethod");
    QDBusMessage strange = method("OpenTap");
    strange << 1000U;
    EXPECT_EQ(client.call(strange).errorName(), "org.freedesktop.DBus.Error.InvalidArgs");
}

}  // namespace
}  // namespace quillmere
