#pragma once

#include "TapService/TapProtocol.h"
#include "Tests/Machine/Session.h"
#include "Tests/Support/ChildProcess.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere::machine {

/// A program that was built beside this one.
std::string programPath(const std::string& name);

/// A process of a session that owns the tap, as the application does, and
/// behaves as the test wants.
class TapOwner {
public:
    enum class Answer { swallow, pass, wait };

    /// Throws SupportError when it cannot be started.
    explicit TapOwner(const Session& session);
    /// A process in the session of somebody else.
    TapOwner(const Session& session, uid_t user);
    /// A process with the session's environment that enters it as told, or does
    /// not.
    TapOwner(const Session& session, std::function<void()> entrance);
    ~TapOwner();
    TapOwner(const TapOwner&) = delete;
    TapOwner& operator=(const TapOwner&) = delete;

    /// The name of the D-Bus error; empty when it went well.
    std::string open();
    /// "no" when it was refused.
    std::string requestAccess() { return call("RequestAccess"); }
    std::string revokeAccess() { return call("RevokeAccess"); }
    /// "no" when there is none.
    std::string hasAccess() { return call("HasAccess"); }

    /// Calls now; `result` says how it went, once it has. For calls with a
    /// dialog.
    void beginRequestAccess();
    std::optional<std::string> result();

    void send(const tap::ClientMessage& message);
    void sendBytes(std::string_view packet);
    /// Sends the packet without end; the process obeys nothing else any more
    /// before the service closes the channel.
    void flood(std::string_view packet);
    void stopReading();
    /// How it answers the questions that come from now on; first: pass.
    void answer(Answer answer);
    void close();

    /// All that has come through the channel up to now.
    const std::vector<tap::ServiceMessage>& messages();
    std::vector<tap::KeyEvent> events();
    /// The last press that waits for its verdict; 0 without one.
    std::uint32_t question();
    bool isDisabled();
    /// Whether the service has closed the channel.
    bool isClosed();
    void clear();

    support::ChildProcess& process() { return *process_; }

private:
    std::string call(std::string_view method);
    void command(char what, std::string_view rest = {});
    std::string waitForResult();
    void receive();

    int control_ = -1;
    std::optional<support::ChildProcess> process_;
    std::vector<tap::ServiceMessage> messages_;
    std::optional<std::string> result_;
    bool isClosed_ = false;
};

}  // namespace quillmere::machine
