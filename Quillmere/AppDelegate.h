#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Permission/PermissionWindow.h"
#include "Quillmere/Plate/SwitchHUD.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Settings/AppSettings.h"
#include "Quillmere/Settings/SettingsWindow.h"
#include "Quillmere/Switching/KeyInterceptor.h"
#include "Quillmere/Updates/FeedSession.h"
#include "Quillmere/Updates/UpdateAlert.h"
#include "Quillmere/Updates/UpdateChecker.h"
#include "Quillmere/Updates/UpdateSchedule.h"
#include "Quillmere/Updates/UpdateWindow.h"
#include "QuillmereCore/PermissionGate.h"
#include "QuillmereCore/UpdateStore.h"

#include <QObject>

#include <memory>
#include <optional>
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

    /// Whether the program has never run before: nothing is stored, nor has the
    /// user had it started at login. The launch itself stores something, so ask
    /// before it.
    bool isFirstStart() const;

    /// Flips the master switch and stores it.
    void toggleActive();

    /// Shows the settings window, made on first use, on the Layouts tab.
    void openSettings();

    /// Looks for updates on the user's behalf; nothing without a feed.
    void checkForUpdates();

    ConfigModel& model() { return model_; }
    /// The keyboard filter, made on first use.
    KeyInterceptor& interceptor();
    const PermissionGate* permissionGate() const { return permissionGate_.get(); }
    /// The window that asks for the permission; null unless it was missing at
    /// some time.
    PermissionWindow* permissionWindow() { return permissionWindow_.get(); }
    /// Whether the permission is being polled for.
    bool isRetrying() const { return retryTimer_ != nullptr; }
    /// The status item, from launch on; null before.
    StatusItem* statusItem() { return statusItem_.get(); }
    /// Whether the program knows where to ask for updates.
    bool updatesEnabled() const { return updateChecker_.has_value(); }
    /// The update window, made on first use.
    UpdateWindow& updateWindow();
    /// The settings' own state, made on first use.
    AppSettings& settings();
    /// The settings window; null before it is first opened.
    SettingsWindow* settingsWindow() { return settingsWindow_.get(); }
    /// The automatic and manual checks; null without a feed.
    const UpdateSchedule* updateSchedule() const { return updateSchedule_.get(); }

private:
    void makeUpdateSchedule();
    /// The settings window is closed.
    void windowWillClose();
    void startInterceptor();
    /// Starts the keyboard filter, and asks for the permission as long as it is
    /// missing.
    void openPermissionGate();
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
    std::unique_ptr<PermissionWindow> permissionWindow_;
    UpdateStore updateStore_;
    std::unique_ptr<UpdateWindow> updateWindow_;
    UpdateAlert updateAlert_;
    std::optional<UpdateChecker> updateChecker_;
    FeedSession feedSession_;
    std::unique_ptr<UpdateSchedule> updateSchedule_;
    std::unique_ptr<AppSettings> settings_;
    std::unique_ptr<SettingsWindow> settingsWindow_;
};

}  // namespace quillmere
