#include "Quillmere/Settings/SettingsWindow.h"

#include "Quillmere/Palette.h"
#include "Quillmere/Settings/SettingsView.h"

namespace quillmere {

SettingsWindow::SettingsWindow(ConfigModel& model, AppSettings& settings, const InputSources& sources,
                               Workspace& workspace, bool glassAvailable)
    : model_(model), settings_(settings), sources_(sources), workspace_(workspace), glassAvailable_(glassAvailable) {}

void SettingsWindow::open() {
    model_.setAvailable(sources_.available());
    settings_.refresh();
    settings_.setTab(SettingsTab::layouts);
    if (!window_) makeWindow();
    window_->show();
    workspace_.bringToFront(*window_);
}

void SettingsWindow::makeWindow() {
    window_ = std::make_unique<Window>(Window::Kind::resizable, QStringLiteral("Quillmere"),
                                       new SettingsView(model_, settings_, glassAvailable_));
    window_->windowWillClose = [this] {
        if (windowWillClose) windowWillClose();
    };
    workspace_.blendTitleBar(*window_, Palette::window().light, Palette::window().dark);
}

}  // namespace quillmere
