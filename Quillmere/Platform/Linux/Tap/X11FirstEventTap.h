#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"

#include <QObject>

#include <functional>
#include <memory>

namespace quillmere {

/// The X server's own tap, and Fn from the key-tap service where that gives a
/// tap, since X11 carries one form of Fn only.
///
/// The service is asked for nothing else: to hold a key back it puts virtual
/// keyboards in the real ones' place, and to the X server these are new, with
/// the layouts it was configured with and not those of setxkbmap. For Fn alone
/// it takes no keyboard.
class X11FirstEventTap final : public QObject, public EventTap {
public:
    using MakeService = std::function<std::unique_ptr<ServiceEventTap>()>;

    /// `makeService` is called once, when Fn matters for the first time: until
    /// then the service need not even run.
    X11FirstEventTap(std::unique_ptr<EventTap> server, MakeService makeService);

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;

private:
    void askService();
    void serviceOpened();
    void serviceLost();
    void tellServer();
    void tellService();
    InterceptDecision handleServers(const KeyEventFields& event);

    std::unique_ptr<EventTap> server_;
    MakeService makeService_;
    std::unique_ptr<ServiceEventTap> service_;
    Callback callback_;
    KeyInterest interest_;
    bool hasServicesFn_ = false;
};

}  // namespace quillmere
