#pragma once

#include "Quillmere/Platform/MainQueue.h"
#include "Quillmere/Platform/PlatePanel.h"
#include "QuillmereCore/PlateSettings.h"

#include <memory>
#include <string>
#include <vector>

class QRectF;
class QSize;
class QWidget;

namespace quillmere {

/// The plate: lists the names of the group that was just cycled, the new one
/// highlighted, for one second after the last switch. Main thread only.
class SwitchHUD {
public:
    /// Both must outlive this. `glassAvailable`: the system has a glass material.
    SwitchHUD(PlatePanel& panel, MainQueue& queue, bool glassAvailable);

    /// Shows the plate at once in the middle of the main screen. `selected` is
    /// an index into `names`; out of range it highlights nothing. A name too
    /// long for the screen is elided.
    void show(const std::vector<std::string>& names, int selected, const PlateSettings& settings);

private:
    std::unique_ptr<QWidget> rows(const std::vector<std::string>& names, int selected, double screenWidth) const;
    PlateMaterial material(const PlateSettings& settings) const;
    std::unique_ptr<QWidget> plate(std::unique_ptr<QWidget> content, const PlateSettings& settings,
                                   const PlateMaterial& material) const;
    void place(const QSize& size, const QRectF& visibleFrame);
    void announce(QWidget& plate) const;
    void scheduleHide();

    PlatePanel& panel_;
    MainQueue& queue_;
    bool glassAvailable_;
    MainQueue::JobHandle hideWork_;
};

}  // namespace quillmere
