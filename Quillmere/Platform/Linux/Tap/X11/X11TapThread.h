#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/StopRequest.h"
#include "Quillmere/Platform/Linux/Tap/X11/TapGuard.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictExchange.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyFilter.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace quillmere {

/// The thread that a key filter runs on. It sleeps until the server, the main
/// thread or a deadline has something for it.
class X11TapThread {
public:
    /// Takes the grabs and starts; null when there is no X server to do it on.
    /// The callback runs on the calling thread, which must be the main one.
    static std::unique_ptr<X11TapThread> start(EventTap::Callback callback, const KeyInterest& interest);

    /// Ends the thread and gives the keyboard back. A verdict that is being
    /// waited for becomes "pass".
    ~X11TapThread();
    X11TapThread(const X11TapThread&) = delete;
    X11TapThread& operator=(const X11TapThread&) = delete;

    // On the main thread:

    void setInterest(const KeyInterest& interest);
    void enable();

private:
    X11TapThread(std::unique_ptr<X11Connection> connection, EventTap::Callback callback, const KeyInterest& interest);

    void run();
    void startGuard();
    bool reconnect();
    void waitForWork();
    void takeOrders();
    void stopProcess();
    void wake() const;

    VerdictExchange exchange_;
    std::unique_ptr<X11Connection> connection_;
    std::optional<X11KeyFilter> filter_;  ///< as long as the connection
    std::string guardProgram_;
    std::unique_ptr<TapGuard> guard_;
    std::optional<StopRequest> stopRequest_;
    int wakeDescriptor_;
    KeyInterest currentInterest_;  ///< the thread's own

    std::mutex mutex_;
    std::condition_variable ordersTaken_;
    std::optional<KeyInterest> newInterest_;
    bool wasEnabled_ = false;
    bool isEnding_ = false;
    bool hasEnded_ = false;

    std::thread thread_;
};

}  // namespace quillmere
