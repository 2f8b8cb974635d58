#include "Quillmere/Settings/SettingsWindow.h"

#include "Quillmere/Icons/AppIcon.h"
#include "Quillmere/Settings/SettingsView.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

namespace quillmere {

namespace {

/// Tells its owner of each closing, from the title bar or by the program.
class ClosableWindow : public QWidget {
public:
    ClosableWindow(std::function<void()> onClose, Qt::WindowFlags flags)
        : QWidget(nullptr, flags), onClose_(std::move(onClose)) {}

protected:
    void closeEvent(QCloseEvent* event) override {
        event->accept();
        onClose_();
    }

private:
    std::function<void()> onClose_;
};

/// Titled, closable, resizable; no button to minimise.
constexpr Qt::WindowFlags windowFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint
                                        | Qt::WindowSystemMenuHint | Qt::WindowMaximizeButtonHint
                                        | Qt::WindowCloseButtonHint;

void centre(QWidget& window) {
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QRect frame(QPoint(), window.size());
    frame.moveCenter(area.center());
    window.move(frame.topLeft());
}

}  // namespace

SettingsWindow::SettingsWindow(ConfigModel& model, AppSettings& settings, const InputSources& sources,
                               Workspace& workspace, bool glassAvailable)
    : model_(model), settings_(settings), sources_(sources), workspace_(workspace), glassAvailable_(glassAvailable) {}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::open() {
    model_.setAvailable(sources_.available());
    settings_.refresh();
    settings_.setTab(SettingsTab::layouts);
    if (!window_) makeWindow();
    window_->show();
    workspace_.bringToFront(*window_);
}

void SettingsWindow::makeWindow() {
    const auto closed = [this] {
        if (onClose) onClose();
    };
    window_ = std::make_unique<ClosableWindow>(closed, windowFlags);
    window_->setWindowTitle(QStringLiteral("Quillmere"));
    window_->setWindowIcon(AppIcon::make());
    auto* const layout = new QVBoxLayout(window_.get());
    layout->setContentsMargins(0, 0, 0, 0);
    view_ = new SettingsView(model_, settings_, glassAvailable_);
    layout->addWidget(view_);
    window_->resize(view_->minimumSize());
    centre(*window_);
    // else the first control would take the focus, without showing it
    window_->setFocusProxy(view_);
    view_->setFocus();
}

}  // namespace quillmere
