#pragma once

#include "Quillmere/Platform/Linux/Plate/PlateFade.h"
#include "Quillmere/Platform/Linux/Plate/PlateShadow.h"
#include "Quillmere/Platform/Linux/Wayland/LayerShellSurface.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandConnection.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandPicture.h"
#include "Quillmere/Platform/PlatePanel.h"

#include <QImage>

#include <memory>
#include <vector>

namespace quillmere {

class Appearance;

/// The plate's panel where a Wayland compositor has a layer shell, which puts
/// it over full-screen windows, at the scale of its output and wherever the
/// program's windows are shown. It holds what it draws only while it is shown.
/// Main thread only.
class LayerShellPlatePanel : public PlatePanel {
public:
    /// Null where no compositor answers at once that it has a layer shell.
    /// Needs the application object. Draws anew when `appearance` changes.
    static std::unique_ptr<PlatePanel> create(const Appearance& appearance);
    ~LayerShellPlatePanel() override;

    void setContent(QWidget* content, const PlateMaterial& material) override;
    /// The compositor alone knows what is free on its outputs, so the place is
    /// always the middle of that; of `frame` only the size counts.
    void setFrame(const QRectF& frame) override;
    /// No larger than any output; its origin has no meaning. Empty while there
    /// is none.
    QRectF visibleFrame() const override;
    void setAlpha(double alpha) override { fade_.set(alpha); }
    double alpha() const override { return fade_.alpha(); }
    void fade(double alpha, double seconds, std::function<void()> completion) override;
    /// On the focused output; shown already, it stays on its own. After a
    /// restart of the compositor it comes to the new one.
    void orderFront() override;
    void orderOut() override;
    bool isTranslucent() const override { return true; }

private:
    LayerShellPlatePanel(std::unique_ptr<WaylandConnection> connection, const Appearance& appearance);

    void follow();
    void reconnect();
    void makeSurface();
    void redraw();
    void present();
    QRegion blurred() const;
    WaylandPicture* freePicture(QSize size);
    void release();

    PlateShadow sheet_;           ///< without a window: it is drawn from
    QWidget* content_ = nullptr;  ///< owned by the sheet
    PlateMaterial material_;
    PlateFade fade_;
    std::unique_ptr<WaylandConnection> connection_;  ///< null where no compositor was found again
    std::unique_ptr<LayerShellSurface> surface_;
    std::vector<std::unique_ptr<WaylandPicture>> pictures_;
    QImage drawn_;  ///< in full opacity; null when it is to be drawn anew
    bool isWanted_ = false;
    bool isStale_ = true;  ///< the screen does not show what it should
};

}  // namespace quillmere
