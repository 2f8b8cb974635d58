#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/Recording/RecordedKeys.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"

#include <QObject>

#include <memory>
#include <vector>

namespace quillmere {

/// The key-tap service where it gives a tap, else the desktop's own tap: the
/// service sees more (an Fn key, for one) and works everywhere, but is not
/// everywhere installed. The service takes over whenever it comes, and the
/// desktop's tap when it goes. While the desktop's does not hear all that is
/// wanted, the service is asked again with each `install`.
class FallbackEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    /// `desktop` need not tell every key: what there is to record without the
    /// service is found here.
    FallbackEventTap(std::unique_ptr<ServiceEventTap> service, std::unique_ptr<EventTap> desktop);

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;
    void arm(const std::vector<ArmedShortcut>& shortcuts) override { desktop_->arm(shortcuts); }
    bool deliversAll() const override;

    /// Whether the service is the tap at this moment.
    bool usesService() const { return inUse_ == service_.get(); }

signals:
    /// `usesService` has changed.
    void tapChanged();

private:
    void use(EventTap& tap);
    bool installDesktops();
    void takeOver();
    void record();

    std::unique_ptr<ServiceEventTap> service_;
    std::unique_ptr<EventTap> desktop_;
    Callback callback_;
    KeyInterest interest_;
    bool isDesktopsInstalled_ = false;
    EventTap* inUse_ = nullptr;  ///< as far as it goes; null before the first `install`
    std::unique_ptr<RecordedKeys> recordedKeys_;
};

}  // namespace quillmere
