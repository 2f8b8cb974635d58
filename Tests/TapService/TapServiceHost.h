#pragma once

#include "TapService/GrantStore.h"
#include "TapService/KeyTapObject.h"
#include "TapService/TapAccess.h"
#include "TapService/TapServer.h"
#include "Tests/TapService/FakeMachine.h"
#include "Tests/TapService/FakeSessions.h"

#include <deque>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace quillmere {

/// The key-tap service on a private bus, in a thread of its own: all of it but
/// the keyboards and the sessions, which are played.
class TapServiceHost {
public:
    /// Starts it, with the sessions "a" of this process's user in front and
    /// "b" of nobody behind. `state` is its state folder.
    TapServiceHost(const std::string& busAddress, const std::filesystem::path& state,
                   tap::Time recordingLimit = tap::TapServer::recordingLimit);
    /// Ends it as SIGTERM does.
    ~TapServiceHost();
    TapServiceHost(const TapServiceHost&) = delete;
    TapServiceHost& operator=(const TapServiceHost&) = delete;

    // Each waits until the service has done it.

    void grant();
    void revoke();
    bool isGranted();
    void activate(const std::string& session);
    /// Moves keys of the one keyboard, as "+ctrl +space".
    void type(const std::string& words);
    /// What came out of its clone so far.
    std::string output();
    bool isGrabbed();
    std::size_t tapCount();
    bool isBusy();
    /// The service does nothing at all, from now on until the result is
    /// dropped, as one that is still being started.
    [[nodiscard]] std::shared_ptr<void> stall();

private:
    struct Service;

    void run();
    std::function<void(Service&)> takeJob();
    /// Does it in the service's thread.
    void post(std::function<void(Service&)> job);
    /// The same, and waits.
    void perform(const std::function<void(Service&)>& job);

    std::string busAddress_;
    std::filesystem::path state_;
    tap::Time recordingLimit_;
    std::mutex mutex_;
    std::deque<std::function<void(Service&)>> jobs_;
    /// A byte for each job; closed at the end.
    int wake_[2];
    std::thread thread_;
};

}  // namespace quillmere
