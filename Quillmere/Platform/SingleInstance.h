#pragma once

#include <functional>
#include <memory>

namespace quillmere {

/// Keeps the program from running twice in one session: where a desktop has no
/// tray, starting it again is how its user reaches the running one. Main
/// thread only.
class SingleInstance {
public:
    SingleInstance() = default;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;
    virtual ~SingleInstance() = default;

    /// True when this is the session's only instance, or when nothing on this
    /// system can tell. False when there is another: that one has then been
    /// activated, and this one should end. Once, at start.
    virtual bool claim() = 0;

    /// What somebody asks of this instance from outside of its windows.
    enum class Request {
        settings,      ///< by starting the program again, too
        toggleActive,  ///< switching on or off
        quit,
    };

    /// Who is told of requests; from the event loop. Those that come before
    /// this is set are kept for it.
    virtual void setOnRequest(std::function<void(Request)> onRequest) = 0;
};

/// The running system's own. Needs the application object; main thread.
std::unique_ptr<SingleInstance> makeSingleInstance();

}  // namespace quillmere
