#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Plate/SwitchHUD.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Switching/KeyInterceptor.h"
#include "QuillmereCore/PermissionGate.h"

#include <QObject>

#include <memory>
#include <string>

namespace quillmere {

class StatusItem;

/// Owns every long-lived object and wires them together. Lives for the whole
/// process. Main thread only.
class AppDelegate : public QObject {
    Q_OBJECT
public:
    /// Loads the configuration and makes the hidden plate.
    explicit AppDelegate(Platform platform);
    ~AppDelegate() override;

    /// The launch sequence; once, when the event loop is about to run.
    void applicationDidFinishLaunching();

    /// Flips the master switch and stores it.
    void toggleActive();

    ConfigModel& model() { return model_; }
    /// The keyboard filter, made on first use.
    KeyInterceptor& interceptor();
    const PermissionGate* permissionGate() const { return permissionGate_.get(); }
    /// Whether the permission is being polled for.
    bool isRetrying() const { return retryTimer_ != nullptr; }
    /// The status item, from launch on; null before.
    StatusItem* statusItem() { return statusItem_.get(); }

private:
    void startInterceptor();
    void observeInterest();
    void showSwitch(const CycleGroup& group, const std::string& selectedID);

    Platform platform_;
    InputSources inputSources_;
    ConfigModel model_;
    std::unique_ptr<KeyInterceptor> interceptor_;
    SwitchHUD hud_;
    MainQueue::JobHandle plateWork_;
    std::unique_ptr<StatusItem> statusItem_;
    MainQueue::JobHandle retryTimer_;
    std::unique_ptr<PermissionGate> permissionGate_;
};

}  // namespace quillmere
