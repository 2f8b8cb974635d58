#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"

#include <QObject>

#include <memory>
#include <vector>

namespace quillmere {

/// The key-tap service where it gives a tap, else the desktop's own tap: the
/// service sees more (an Fn key, for one) and works everywhere, but is not
/// everywhere installed. A service that needs longer to start than the program
/// takes over when it is there; and while the desktop's tap does not hear all
/// that is wanted, the service is asked again with each `install`.
class FallbackEventTap final : public QObject, public EventTap {
public:
    FallbackEventTap(std::unique_ptr<ServiceEventTap> service, std::unique_ptr<EventTap> displayServer);

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;
    void arm(const std::vector<ArmedShortcut>& shortcuts) override { displayServer_->arm(shortcuts); }

private:
    bool installDisplayServers();
    void giveUpService();
    void takeOver();

    std::unique_ptr<ServiceEventTap> service_;  ///< null once the display server's tap is taken for good
    std::unique_ptr<EventTap> displayServer_;
    Callback callback_;
    bool isDisplayServersInstalled_ = false;
    bool servesPartly_ = false;  ///< the desktop's tap delivers what it can, and the service is waited for
    EventTap* inUse_ = nullptr;
};

}  // namespace quillmere
