#include "Fuzz/Require.h"
#include "TapService/KeyTapNames.h"
#include "TapService/Log.h"
#include "TapService/TapAccess.h"
#include "Tests/TapService/FakeMachine.h"
#include "Tests/TapService/FakeSessions.h"
#include "Tests/TapService/TapLoop.h"
#include "Tests/TapService/TapProgram.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <list>
#include <set>
#include <string>
#include <string_view>

// What is wrong with a message is said a thousand times a second here.
namespace quillmere::tap::Log {

void error(std::string_view) {}
void warning(std::string_view) {}
void notice(std::string_view) {}
void notice(std::string_view, int) {}
void warning(std::string_view, int) {}
void error(std::string_view, int) {}

}  // namespace quillmere::tap::Log

namespace quillmere::tap {
namespace {

constexpr DeviceId keyboard = 1;
/// Steps of one run: each goes through real sockets, and takes its time.
constexpr int longest = 32;
constexpr uid_t firstUser = 1000;
constexpr uid_t lastUser = 1002;
constexpr std::array<const char*, 4> sessionNames = {"a", "b", "c", "d"};
constexpr std::array<const char*, 12> keys = {"ctrl", "shift", "alt", "super", "fn",        "space",
                                              "a",    "k",     "f13", "esc",   "backspace", "enter"};

class FakeGrants : public Grants {
public:
    std::set<uid_t> users;

    bool isGranted(uid_t user) const override { return users.contains(user); }
    bool grant(uid_t user) override {
        users.insert(user);
        return true;
    }
    void revoke(uid_t user) override { users.erase(user); }
};

/// A program that was handed a tap.
struct Caller {
    uid_t user;
    std::string session;
    TapProgram program;
    bool wasEntitled = true;  ///< before what happens now
};

/// Random calls by random users' programs, while administrators grant and
/// revoke, sessions come and go and are locked, and somebody types.
class Crowd {
public:
    explicit Crowd(FuzzedDataProvider& data) : data_(data) {
        require(server_.start(), "the server starts");
        machine_.plug(keyboard);
        uid_t user = firstUser;
        for (const char* name : sessionNames)
            sessions_.sessions[name] = {std::min(user++, lastUser), false, false};
        sessions_.activate(sessionNames.front());
        // The ways from here lead everywhere; to here they would be long.
        grants_.users = {firstUser, lastUser};
    }

    void run() {
        for (int steps = 0; steps < longest && data_.remaining_bytes() > 0; ++steps) {
            for (Caller& caller : callers_)
                caller.wasEntitled = isEntitled(caller);
            step();
            settle();
            check();
        }
        end();
    }

private:
    void step() {
        switch (data_.ConsumeIntegralInRange(0, 11)) {
            case 0:
            case 1:
                open();
                break;
            case 2:
                access_.revoke(anyUser());
                break;
            case 3:
                access_.grant(anyUser());
                break;
            case 4:
                sessions_.activate(anySession());
                break;
            case 5:
                if (sessions_.sessions.contains(lockable())) sessions_.lock(lockable(), data_.ConsumeBool());
                break;
            case 6:
                changeSession();
                break;
            case 7:
                removeGrant();
                break;
            case 8:
                hangUp();
                break;
            case 9:
                say();
                break;
            default:
                type();
        }
    }

    uid_t anyUser() { return data_.ConsumeIntegralInRange<uid_t>(firstUser, lastUser); }
    std::string anySession() { return data_.PickValueInArray(sessionNames); }
    /// The one in front, or the first there is.
    std::string lockable() const {
        for (const auto& [name, session] : sessions_.sessions)
            if (session.isActive) return name;
        return sessionNames.front();
    }
    Caller* anyCaller() {
        if (callers_.empty()) return nullptr;
        return &*std::next(callers_.begin(),
                           data_.ConsumeIntegralInRange<int>(0, static_cast<int>(callers_.size()) - 1));
    }

    void begin(const std::string& name) {
        sessions_.sessions[name] = {.user = anyUser(), .isActive = false, .isLocked = data_.ConsumeBool()};
        if (sessions_.onChange) sessions_.onChange();
    }

    void changeSession() {
        const std::string name = anySession();
        if (sessions_.sessions.erase(name) == 0) {
            begin(name);
        } else if (sessions_.onChange) {
            sessions_.onChange();
        }
    }

    /// As an administrator does: the service hears of it afterwards.
    void removeGrant() {
        grants_.revoke(anyUser());
        access_.enforce();
    }

    void open() {
        const uid_t user = anyUser();
        const auto session = sessions_.activeSession(0, user);
        auto program = access_.open(user, 0);
        if (!program) {
            const std::string error = program.error().error;
            require(error != KeyTapNames::Error::notGranted || !grants_.isGranted(user),
                    "a granted user is not refused");
            require(error != KeyTapNames::Error::notActive || !session, "an active session is not refused");
            return;
        }
        require(grants_.isGranted(user) && session.has_value(), "nobody else gets a tap");
        callers_.push_back({user, *session, TapProgram(std::move(*program))});
    }

    void hangUp() {
        const Caller* gone = anyCaller();
        std::erase_if(callers_, [gone](const Caller& caller) { return &caller == gone; });
    }

    void say() {
        Caller* caller = anyCaller();
        if (caller == nullptr) return;
        switch (data_.ConsumeIntegralInRange(0, 4)) {
            case 0:
                caller->program.send(Enable{});
                break;
            case 1:
                caller->program.send(Verdict{data_.ConsumeIntegralInRange<std::uint32_t>(1, 4), data_.ConsumeBool()});
                break;
            case 2:
                flood(caller->program);
                break;
            case 3: {
                const auto bytes = data_.ConsumeBytes<std::byte>(data_.ConsumeIntegralInRange<std::size_t>(0, 40));
                caller->program.sendBytes(Packet(bytes.begin(), bytes.end()));
                break;
            }
            default:
                caller->program.send(anyInterest());
        }
    }

    static void flood(TapProgram& program) {
        const Packet enable = encode(Enable{});
        for (int count = 0; count < 40; ++count)
            program.tryToSend(enable);
    }

    Interest anyInterest() {
        Interest interest{.everyKey = data_.ConsumeBool(), .wantsFn = data_.ConsumeBool(), .shortcuts = {}};
        for (int count = data_.ConsumeIntegralInRange(0, 2); count > 0; --count) {
            interest.shortcuts.push_back(
                {TapBench::code(data_.PickValueInArray(keys)),
                 static_cast<std::uint8_t>(data_.ConsumeIntegral<std::uint8_t>() & Flags::modifiers)});
        }
        return interest;
    }

    void type() {
        const std::string key = data_.PickValueInArray(keys);
        const bool isDown = machine_.keyboard(keyboard).down.test(TapBench::code(key));
        machine_.type(keyboard, (isDown ? "-" : "+") + key);
    }

    /// Whether it may be told of keys.
    bool isEntitled(const Caller& caller) const {
        const auto session = sessions_.sessions.find(caller.session);
        return session != sessions_.sessions.end() && session->second.isActive && !session->second.isLocked
               && session->second.user == caller.user && grants_.isGranted(caller.user);
    }

    void settle() {
        loop_.run();
        for (Caller& caller : callers_) {
            const bool isTold = std::ranges::any_of(caller.program.receive(), [](const ServiceMessage& message) {
                return std::holds_alternative<KeyEvent>(message);
            });
            require(!isTold || caller.wasEntitled || isEntitled(caller), "nobody else is told of a key");
        }
        std::erase_if(callers_, [](Caller& caller) { return caller.program.isClosed(); });
    }

    void check() {
        require(machine_.fakes.faults.empty(), "the keyboards are treated well");
        std::set<std::string> open;
        for (const Caller& caller : callers_) {
            require(grants_.isGranted(caller.user), "every tap has its grant");
            const auto session = sessions_.sessions.find(caller.session);
            require(session != sessions_.sessions.end(), "every tap has its session");
            require(open.insert(caller.session).second, "a session has one tap");
        }
        require(server_.tapCount() == callers_.size(), "what is open is what was handed out and not taken back");
        const bool isAnyEntitled =
            std::ranges::any_of(callers_, [this](const Caller& caller) { return isEntitled(caller); });
        const FakeKeyboards::Keyboard& held = machine_.keyboard(keyboard);
        require(isAnyEntitled || held.down.any() || !held.isGrabbed,
                "only for an active, unlocked session is a keyboard held");
    }

    void end() {
        callers_.clear();
        for (const char* key : keys)
            if (machine_.keyboard(keyboard).down.test(TapBench::code(key)))
                machine_.type(keyboard, std::string("-") + key);
        loop_.run();
        require(server_.tapCount() == 0, "no descriptor stays open");
        require(!machine_.keyboard(keyboard).isGrabbed && machine_.keyboard(keyboard).cloneDown.none(),
                "without a tap everybody has their keyboard again");
    }

    FuzzedDataProvider& data_;
    TapLoop loop_;
    FakeMachine machine_;
    FakeSessions sessions_;
    FakeGrants grants_;
    TapServer server_{loop_.get(), machine_, sessions_};
    TapAccess access_{grants_, sessions_, server_};
    std::list<Caller> callers_;
};

}  // namespace
}  // namespace quillmere::tap

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider provider(data, size);
    quillmere::tap::Crowd(provider).run();
    return 0;
}
