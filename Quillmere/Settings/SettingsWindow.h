#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Controls/Window.h"
#include "Quillmere/Platform/Workspace.h"
#include "Quillmere/Settings/AppSettings.h"
#include "Quillmere/Switching/InputSources.h"

#include <functional>
#include <memory>

namespace quillmere {

/// The settings window, made when it is first opened and kept when closed.
/// Main thread only.
class SettingsWindow {
public:
    /// The references, and the service behind `sources`, must outlive this.
    /// `glassAvailable`: the system has a glass material.
    SettingsWindow(ConfigModel& model, AppSettings& settings, const InputSources& sources, Workspace& workspace,
                   bool glassAvailable);

    /// Told each time the window closes; may be empty.
    std::function<void()> windowWillClose;

    /// Shows the window on the Layouts tab, in front, with the sources and
    /// settings of this moment.
    void open();

    /// The window; null before it is first opened.
    QWidget* window() const { return window_.get(); }

private:
    void makeWindow();

    ConfigModel& model_;
    AppSettings& settings_;
    InputSources sources_;
    Workspace& workspace_;
    bool glassAvailable_;
    std::unique_ptr<Window> window_;
};

}  // namespace quillmere
